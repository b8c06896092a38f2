#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "ChildProcess.h"
#include "ModuleTest.h"
#include "SystemCalls.h"

namespace ZET {
namespace {

using namespace std::chrono_literals;

constexpr char kSaveMessage[] =
    "libzet-core src/interfaces/zet-config/ZETConfigFile InternalSaveAs 1: Failed to save file "
    "'D/target.tmp'.";

class SaveFaultsTest : public ModuleTest {
  protected:
    void Open(const std::string& text, mode_t mode = 0644) {
        ASSERT_TRUE(m_file.Open(Write("target", text, mode), "server", true));
        m_core.Forget();
    }

    void ExpectSaveFails() {
        ExpectError<EZETError>("Failed to save file 'D/target.tmp'.", [&] { m_file.Save(false); });
        EXPECT_EQ(Messages(), Strings{kSaveMessage});
        EXPECT_EQ(Journal({"IsFileExist", "CreateFile", "RenameFile", "Put"}), Strings{});
    }

    CZETConfigFile m_file{m_core};
};

TEST_F(SaveFaultsTest, TemporaryFileThatCannotBeCreatedLeavesTheTargetUntouched) {
    LeavesTemporary();
    Open("x=1\n");
    ASSERT_EQ(::mkdir(Path("target.tmp").c_str(), 0755), 0);
    ExpectSaveFails();
    EXPECT_EQ(Read("target"), "x=1\n");
    EXPECT_EQ(Names(), (Strings{"target", "target.tmp"}));
}

TEST_F(SaveFaultsTest, MissingDirectoryOfTheTargetIsAFailedSave) {
    Write("cfg/t.conf", "x\n");
    ASSERT_TRUE(m_file.OpenTemplate("t.conf", Path("no/such/target"), "", true));
    ExpectError<EZETError>("Failed to save file 'D/no/such/target.tmp'.", [&] { m_file.Save(false); });
}

TEST_F(SaveFaultsTest, DirectoryThatMayNotBeWrittenIsAFailedSave) {
    const std::string path = Write("target", "x=1\n");
    ASSERT_EQ(::chmod(m_directory.c_str(), 0555), 0);
    const auto code = ExitOfChild(5s, [&] {
        if (::geteuid() == 0 && ::seteuid(65534) != 0) return kNotPossible;
        EXPECT_TRUE(m_file.Open(path, "", true));
        m_core.Forget();
        ExpectSaveFails();
        return 0;
    });
    ASSERT_EQ(::chmod(m_directory.c_str(), 0755), 0);
    if (code == kNotPossible) GTEST_SKIP() << "cannot become an ordinary user";
    EXPECT_EQ(code, 0);
    EXPECT_EQ(Names(), Strings{"target"});
}

TEST_F(SaveFaultsTest, FileThatMayNotBeWrittenIsReplacedWhenItsDirectoryMay) {
    const std::string path = Write("target", "x=1\n", 0444);
    ASSERT_EQ(::chmod(m_directory.c_str(), 0777), 0);
    const auto code = ExitOfChild(5s, [&] {
        if (::geteuid() == 0 && ::seteuid(65534) != 0) return kNotPossible;
        EXPECT_TRUE(m_file.Open(path, "", true));
        m_file.SetLine("^x=", "x=2");
        m_file.Save(true);
        return 0;
    });
    if (code == kNotPossible) GTEST_SKIP() << "cannot become an ordinary user";
    EXPECT_EQ(code, 0);
    EXPECT_EQ(Read("target"), "x=2\n");
    EXPECT_EQ(Mode("target"), 0444U);
}

TEST_F(SaveFaultsTest, FailedWriteLeavesTheTargetAndAPrivateTemporaryFile) {
    LeavesTemporary();
    const std::string text(100000, 'x');
    const std::string path = Write("target", text);
    ExpectChildPasses(5s, [&] {
        ASSERT_TRUE(m_file.Open(path, "", true));
        m_core.Forget();
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {5000, 5000};
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
        ExpectSaveFails();
    });
    EXPECT_EQ(Read("target"), text);
    EXPECT_EQ(Names(), (Strings{"target", "target.tmp"}));
    EXPECT_EQ(Mode("target.tmp"), 0600U);
}

TEST_F(SaveFaultsTest, FullDiskLeavesTheTargetUntouched) {
    const std::string text(40000, 'x');
    const auto code = ExitOfChild(5s, [&] {
        if (::geteuid() != 0 || ::unshare(CLONE_NEWNS) != 0) return kNotPossible;
        if (::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return kNotPossible;
        if (::mount("tmpfs", m_directory.c_str(), "tmpfs", 0, "size=64k") != 0) return kNotPossible;
        Open(text);
        ExpectSaveFails();
        EXPECT_EQ(Read("target"), text);
        EXPECT_EQ(Names(), (Strings{"target", "target.tmp"}));
        return 0;
    });
    if (code == kNotPossible) GTEST_SKIP() << "cannot mount a small file system";
    EXPECT_EQ(code, 0);
}

TEST_F(SaveFaultsTest, ReadOnlyFileSystemIsAFailedSave) {
    const auto code = ExitOfChild(5s, [&] {
        if (::geteuid() != 0 || ::unshare(CLONE_NEWNS) != 0) return kNotPossible;
        if (::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return kNotPossible;
        if (::mount("tmpfs", m_directory.c_str(), "tmpfs", 0, nullptr) != 0) return kNotPossible;
        Open("x=1\n");
        if (::mount("none", m_directory.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) != 0)
            return kNotPossible;
        ExpectSaveFails();
        return 0;
    });
    if (code == kNotPossible) GTEST_SKIP() << "cannot mount a file system";
    EXPECT_EQ(code, 0);
}

TEST_F(SaveFaultsTest, UnavailableStatusOfTheTemporaryFileLeavesTheTargetUntouched) {
    LeavesTemporary();
    Open("x=1\n");
    {
        const SystemCalls lies({.statError = EIO, .statFailsOnlyAfterWrite = true});
        ExpectError<EZETError>("Error stat 'D/target.tmp':Input/output error", [&] { m_file.Save(false); });
    }
    EXPECT_EQ(Messages(), Strings{"libzet-core src/interfaces/zet-config/ZETConfigFile InternalSaveAs 1: "
                                  "Error stat 'D/target.tmp':Input/output error"});
    EXPECT_EQ(Journal({"IsFileExist", "RenameFile", "Put"}), Strings{});
    EXPECT_EQ(Names(), (Strings{"target", "target.tmp"}));
    EXPECT_EQ(Read("target"), "x=1\n");
}

TEST_F(SaveFaultsTest, FailedCloseIsNotReported) {
    Open("x=1\n");
    m_file.SetLine("^x=", "x=2");
    {
        const SystemCalls lies({.closeError = EIO});
        m_file.Save(true);
        EXPECT_GT(lies.Record().closes, 0U);
    }
    EXPECT_EQ(Read("target"), "x=2\n");
    EXPECT_EQ(Log(), Strings{});
}

TEST_F(SaveFaultsTest, ShortAndInterruptedWritesAreContinued) {
    const std::string text = "first line\n\nsecond line\nlast";
    Open(text);
    {
        const SystemCalls lies({.interrupts = true, .atMost = 3});
        m_file.Save(true);
        EXPECT_GT(lies.Record().interruptions, 1U);
    }
    EXPECT_EQ(Read("target"), text);
}

TEST_F(SaveFaultsTest, WriteOfNoByteIsAFailedSaveAndNotTriedForEver) {
    LeavesTemporary();
    Open("x=1\n");
    {
        const SystemCalls lies({.writesNothing = true});
        ExpectSaveFails();
        EXPECT_EQ(lies.Record().writes, 1U);
    }
    EXPECT_EQ(Read("target"), "x=1\n");
}

/// A file helper that fails, and what is there afterwards.
struct FailingHelper {
    const char* name;
    const char* call;
    std::size_t nth;
    bool targetBefore;
    Strings namesAfter;
};

void PrintTo(const FailingHelper& each, std::ostream* stream) {
    *stream << each.name;
}

class FailingHelperTest : public SaveFaultsTest, public testing::WithParamInterface<FailingHelper> {};

TEST_P(FailingHelperTest, PassesThroughAndEndsTheSave) {
    LeavesTemporary();
    if (GetParam().targetBefore) Write("target", "old\n");
    Write("cfg/t.conf", "new\n");
    ASSERT_TRUE(m_file.OpenTemplate("t.conf", Path("target"), "server", true));
    m_core.FailAt(GetParam().call, GetParam().nth);
    ExpectScriptedFailure(GetParam().call, [&] { m_file.Save(false); });
    EXPECT_EQ(Names(), GetParam().namesAfter);
    EXPECT_EQ(Read("target.tmp"), "new\n");
    EXPECT_EQ(Journal().back().substr(0, std::string(GetParam().call).size()), GetParam().call);
}

INSTANTIATE_TEST_SUITE_P(
    EachStep, FailingHelperTest,
    testing::Values(
        FailingHelper{"LookingForTheTarget", "IsFileExist", 1, true, {"target", "target.tmp"}},
        FailingHelper{"LookingForTheReserve", "IsFileExist", 2, true, {"target", "target.tmp"}},
        FailingHelper{"LookingForTheRecord", "IsFileExist", 3, true, {"target", "target.tmp"}},
        FailingHelper{"MovingTheTargetAway", "RenameFile", 1, true, {"target", "target.tmp"}},
        FailingHelper{"MovingTheNewTextIn", "RenameFile", 2, true, {"target.before_zet", "target.tmp"}},
        FailingHelper{"RecordingTheAbsence", "CreateFile", 1, false, {"target.tmp"}},
        FailingHelper{
            "MovingTheFirstTextIn", "RenameFile", 1, false, {"target.no_file_before_zet", "target.tmp"}}),
    [](const testing::TestParamInfo<FailingHelper>& info) { return info.param.name; });

}  // namespace
}  // namespace ZET
