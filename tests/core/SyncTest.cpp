#include "Support.h"
#include "SystemCalls.h"
#include "zet/ZETFiles.h"

namespace ZET::Test {
namespace {

/// The parameter "ZET_SYNC".
class Syncing : public HostFixture {
  protected:
    /// How often all the file helpers together sync something.
    int Syncs() {
        SystemCalls calls;
        CreateFile(m_directory / "a");
        CopyFile(m_directory / "a", m_directory / "b");
        RenameFile(m_directory / "a", m_directory / "c");
        RemoveFile(m_directory / "b");
        RemoveFile(m_directory / "c");
        return calls.Count("fsync") + calls.Count("sync");
    }

    /// Two for creating, copying and renaming each, one for removing twice.
    static constexpr int kAll = 8;
};

TEST_F(Syncing, IsOnWithoutAHost) {
    EXPECT_EQ(Syncs(), kAll);
}

TEST_F(Syncing, IsOnUnlessSaidOtherwise) {
    Start("");
    EXPECT_EQ(Syncs(), kAll);
}

TEST_F(Syncing, FileCanTurnItOff) {
    Start("ZET_SYNC=no\n");
    EXPECT_EQ(Syncs(), 0);
}

TEST_F(Syncing, UpdateTurnsItOffAndOn) {
    Start("");
    Core().UpdateParam("ZET_SYNC", "0");
    EXPECT_EQ(Syncs(), 0);
    Core().UpdateParam("ZET_SYNC", "true");
    EXPECT_EQ(Syncs(), kAll);
}

TEST_F(Syncing, IsOnForAWordThatIsNeitherYesNorNo) {
    Start("ZET_SYNC=no\n");
    LoggedBy([&] { Core().UpdateParam("ZET_SYNC", "no "); });
    EXPECT_GT(Syncs(), 0);
    LoggedBy([&] { Start("ZET_SYNC=NO\n"); });
    EXPECT_GT(Syncs(), 0);
}

TEST_F(Syncing, IsOnAgainAfterTheHost) {
    Start("ZET_SYNC=no\n");
    m_host.reset();
    EXPECT_EQ(Syncs(), kAll);
}

TEST_F(Syncing, IsOffOnlyWhileEveryHostWantsItOff) {
    const std::string other = m_directory / "other.conf";
    WriteText(other, "ZET_SYNC=no\n");
    Start("");
    auto second = std::make_unique<CZETHost>(other);
    EXPECT_EQ(Syncs(), kAll);
    m_host->GetCore().UpdateParam("ZET_SYNC", "no");
    EXPECT_EQ(Syncs(), 0);
    second.reset();
    EXPECT_EQ(Syncs(), 0);
}

TEST_F(Syncing, OffStillReportsEveryOtherFailure) {
    Start("ZET_SYNC=no\n");
    MessageOf<EZETError>([&] { CreateFile(m_directory / "none/a"); });
    MessageOf<EZETError>([&] { RenameFile(m_directory / "a", m_directory / "b"); });
    MessageOf<EZETError>([&] { RemoveFile(m_directory / "a"); });
}

}  // namespace
}  // namespace ZET::Test
