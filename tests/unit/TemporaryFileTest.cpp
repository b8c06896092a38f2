#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "ChildProcess.h"
#include "ModuleTest.h"
#include "SystemCalls.h"

namespace ZET {
namespace {

using namespace std::chrono_literals;

/// What a save makes of the name of its temporary file, and the mode of that file.
class TemporaryFileTest : public ModuleTest {
  protected:
    TemporaryFileTest() { m_maskBefore = ::umask(022); }
    ~TemporaryFileTest() override { ::umask(m_maskBefore); }

    void Open(const std::string& text, mode_t mode = 0644) {
        ASSERT_TRUE(m_file.Open(Write("target", text, mode), "server", true));
        m_core.Forget();
    }

    void ExpectSaveFails() {
        LeavesTemporary();
        ExpectChildPasses(5s, [&] {
            ExpectError<EZETError>("Failed to save file 'D/target.tmp'.", [&] { m_file.Save(false); });
            EXPECT_EQ(Journal({"IsFileExist", "CreateFile", "RenameFile"}), Strings{});
        });
        EXPECT_EQ(Read("target"), "x=1\n");
    }

    CZETConfigFile m_file{m_core};
    mode_t m_maskBefore = 0;
};

TEST_F(TemporaryFileTest, LinkInItsPlaceIsNotFollowed) {
    Open("x=1\n");
    Write("other", "precious\n", 0644);
    ASSERT_EQ(::symlink("other", Path("target.tmp").c_str()), 0);
    ExpectSaveFails();
    EXPECT_EQ(Read("other"), "precious\n");
    EXPECT_EQ(Mode("other"), 0644U);
    EXPECT_EQ(Names(), (Strings{"other", "target", "target.tmp"}));
}

TEST_F(TemporaryFileTest, DanglingLinkInItsPlaceCreatesNothing) {
    Open("x=1\n");
    ASSERT_EQ(::symlink("other", Path("target.tmp").c_str()), 0);
    ExpectSaveFails();
    EXPECT_EQ(Names(), (Strings{"target", "target.tmp"}));
}

TEST_F(TemporaryFileTest, FileWithAnotherNameIsNotTouched) {
    Open("x=1\n");
    Write("other", "precious\n", 0640);
    ASSERT_EQ(::link(Path("other").c_str(), Path("target.tmp").c_str()), 0);
    ExpectSaveFails();
    EXPECT_EQ(Read("other"), "precious\n");
    EXPECT_EQ(Mode("other"), 0640U);
    EXPECT_TRUE(Exists("target.tmp"));
}

TEST_F(TemporaryFileTest, HardLinkOfTheTargetItselfIsNotTouched) {
    Open("x=1\n");
    ASSERT_EQ(::link(Path("target").c_str(), Path("target.tmp").c_str()), 0);
    ExpectSaveFails();
}

TEST_F(TemporaryFileTest, PipeInItsPlaceIsRefusedAtOnce) {
    Open("x=1\n");
    ASSERT_EQ(::mkfifo(Path("target.tmp").c_str(), 0600), 0);
    ExpectSaveFails();
}

TEST_F(TemporaryFileTest, PipeWithAReaderInItsPlaceGetsNothing) {
    Open("x=1\n");
    ASSERT_EQ(::mkfifo(Path("target.tmp").c_str(), 0644), 0);
    const int reader = ::open(Path("target.tmp").c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(reader, 0);
    ExpectSaveFails();
    char byte = 0;
    EXPECT_EQ(::read(reader, &byte, 1), -1);
    EXPECT_EQ(Mode("target.tmp"), 0644U);
    ::close(reader);
}

TEST_F(TemporaryFileTest, DirectoryInItsPlaceIsRefused) {
    Open("x=1\n");
    ASSERT_EQ(::mkdir(Path("target.tmp").c_str(), 0755), 0);
    ExpectSaveFails();
    EXPECT_EQ(Mode("target.tmp"), 0755U);
}

TEST_F(TemporaryFileTest, LeftOverOfALongerTextIsEmptied) {
    Open("x=1\n");
    Write("target.tmp", "the much longer text of a save that was killed\n");
    m_file.Save(true);
    EXPECT_EQ(Read("target"), "x=1\n");
    EXPECT_EQ(Names(), Strings{"target"});
}

TEST_F(TemporaryFileTest, LeftOverThatOthersMayReadIsMadePrivateFirst) {
    Open("x=1\n", 0600);
    Write("target.tmp", "left over\n", 0666);
    m_file.Save(true);
    EXPECT_EQ(Mode("target"), 0600U);
}

TEST_F(TemporaryFileTest, LeftOverIsPrivateWhileItIsWritten) {
    LeavesTemporary();
    Open("x=1\n", 0644);
    Write("target.tmp", "left over\n", 0666);
    {
        const SystemCalls lies({.statError = EIO, .statFailsOnlyAfterWrite = true});
        ExpectError<EZETError>("Error stat 'D/target.tmp':Input/output error", [&] { m_file.Save(false); });
    }
    EXPECT_EQ(Mode("target.tmp"), 0600U);
    EXPECT_EQ(Read("target.tmp"), "x=1\n");
}

/// The calls that make a left-over fit to be written, each of which can fail.
class UnfitLeftOverTest : public TemporaryFileTest, public testing::WithParamInterface<const char*> {};

TEST_P(UnfitLeftOverTest, IsAFailedSaveThatWritesNothing) {
    LeavesTemporary();
    Open("x=1\n");
    Write("target.tmp", "left over\n", 0644);
    {
        const SystemCalls lies({.failing = {{GetParam(), EIO}}});
        ExpectError<EZETError>("Failed to save file 'D/target.tmp'.", [&] { m_file.Save(false); });
        EXPECT_EQ(lies.Record().counts.at(GetParam()), 1U);
        EXPECT_EQ(lies.Record().writes, 0U);
    }
    EXPECT_EQ(Journal({"IsFileExist", "CreateFile", "RenameFile"}), Strings{});
    EXPECT_EQ(Read("target.tmp"), "left over\n");
    EXPECT_EQ(Read("target"), "x=1\n");
}

INSTANTIATE_TEST_SUITE_P(EachCall, UnfitLeftOverTest, testing::Values("fstat", "fchmod", "ftruncate"),
                         [](const testing::TestParamInfo<const char*>& info) { return info.param; });

TEST_F(TemporaryFileTest, NewOneIsPrivateWhileItIsWritten) {
    LeavesTemporary();
    Open("x=1\n", 0644);
    {
        const SystemCalls lies({.statError = EIO, .statFailsOnlyAfterWrite = true});
        ExpectError<EZETError>("Error stat 'D/target.tmp':Input/output error", [&] { m_file.Save(false); });
    }
    EXPECT_EQ(Mode("target.tmp"), 0600U);
}

TEST_F(TemporaryFileTest, FinalModeDoesNotDependOnTheCreationMask) {
    Open("x=1\n", 0666);
    ::umask(077);
    m_file.Save(true);
    EXPECT_EQ(Mode("target"), 0666U);
    EXPECT_EQ(::umask(022), 077U);
}

TEST_F(TemporaryFileTest, CreationMaskIsZeroDuringTheChangeOfModeAndPutBack) {
    Open("x=1\n", 0644);
    const SystemCalls seen({});
    m_file.Save(true);
    Strings calls = seen.Record().attributeCalls;
    ASSERT_GE(calls.size(), 3U);
    calls.erase(calls.begin(), calls.end() - 3);
    EXPECT_EQ(calls, (Strings{"mask 0", "mode 644", "mask 22"}));
}

TEST_F(TemporaryFileTest, ModeThatIsRightAlreadyIsNotChanged) {
    Open("x=1\n", 0600);
    const SystemCalls seen({});
    m_file.Save(true);
    for (const std::string& call : seen.Record().attributeCalls)
        EXPECT_EQ(call, "mode 600");
    EXPECT_EQ(Mode("target"), 0600U);
}

TEST_F(TemporaryFileTest, ChangeOfModeThatFailsIsNotReported) {
    Open("x=1\n", 0644);
    {
        const SystemCalls lies({.modeError = EPERM});
        m_file.Save(true);
    }
    EXPECT_EQ(Mode("target"), 0600U);
    EXPECT_EQ(Log(), Strings{});
}

TEST_F(TemporaryFileTest, NoSaveLeavesADescriptorOpen) {
    LeavesTemporary();
    const auto count = [] {
        const auto entries = std::filesystem::directory_iterator("/proc/self/fd");
        return std::distance(begin(entries), end(entries));
    };
    Open("x=1\n");
    const auto before = count();
    m_file.Save(true);
    EXPECT_EQ(count(), before);
    ASSERT_EQ(::link(Path("target").c_str(), Path("target.tmp").c_str()), 0);
    EXPECT_THROW(m_file.Save(true), EZETError);
    EXPECT_EQ(count(), before);
    ASSERT_EQ(::unlink(Path("target.tmp").c_str()), 0);
    const SystemCalls lies({.statError = EIO, .statFailsOnlyAfterWrite = true});
    EXPECT_THROW(m_file.Save(true), EZETError);
    EXPECT_EQ(count(), before);
}

}  // namespace
}  // namespace ZET
