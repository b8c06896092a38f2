#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <map>

#include "ChildProcess.h"
#include "ModuleTest.h"
#include "SystemCalls.h"

namespace ZET {
namespace {

using namespace std::chrono_literals;

constexpr uid_t kUser = 65534;
constexpr uid_t kOther = 65533;
constexpr gid_t kGroup = 65532;
constexpr mode_t kRunsAsOwner = S_ISUID | S_ISGID;

/// Whose a saved file is, and what it lets others run. Only root can make files of several users.
class OwnerTest : public ModuleTest {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) GTEST_SKIP() << "only root can give files away";
    }

    void WriteOf(uid_t user, gid_t group, const std::string& name, const std::string& text, mode_t mode) {
        const std::string path = Write(name, text, mode);
        ASSERT_EQ(::chown(path.c_str(), user, group), 0);
        ASSERT_EQ(::chmod(path.c_str(), mode), 0);
    }

    /// The user's file D/target, to be edited in place.
    void OpenOf(uid_t user, gid_t group, mode_t mode) {
        WriteOf(user, group, "target", "x=1\n", mode);
        OpenAs("target");
    }

    void OpenAs(const std::string& name) {
        ASSERT_TRUE(m_file.Open(Path(name), "server", true));
        m_core.Forget();
    }

    /// A template of that mode, which another user made, to become D/target.
    void OpenTemplate(mode_t mode) {
        WriteOf(kOther, kGroup, "cfg/t.conf", "x=1\n", mode);
        ASSERT_TRUE(m_file.OpenTemplate("t.conf", Path("target"), "server", true));
        m_core.Forget();
    }

    struct stat Status(const std::string& name) const {
        struct stat status = {};
        EXPECT_EQ(::lstat(Path(name).c_str(), &status), 0);
        return status;
    }

    /// As "user:group mode".
    std::string OwnerAndMode(const std::string& name) const {
        const struct stat status = Status(name);
        char text[64] = "";
        std::snprintf(text, sizeof text, "%u:%u %o", status.st_uid, status.st_gid, status.st_mode & 07777U);
        return text;
    }

    static Strings OwnerCalls(const SystemCalls& calls) {
        Strings chosen;
        for (const std::string& call : calls.Record().attributeCalls)
            if (call.starts_with("owner")) chosen.push_back(call);
        return chosen;
    }

    CZETConfigFile m_file{m_core};
};

TEST_F(OwnerTest, FileOfAUserStaysHis) {
    OpenOf(kUser, kGroup, 0640);
    m_file.Save(true);
    EXPECT_EQ(OwnerAndMode("target"), "65534:65532 640");
}

TEST_F(OwnerTest, FileOfAUserStaysHisWhenItIsMovedToItsReserve) {
    OpenOf(kUser, kGroup, 0640);
    m_file.Save(false);
    EXPECT_EQ(OwnerAndMode("target"), "65534:65532 640");
    EXPECT_EQ(OwnerAndMode("target.before_zet"), "65534:65532 640");
}

TEST_F(OwnerTest, OwnerComesBeforeTheMode) {
    OpenOf(kUser, kGroup, 04755);
    const mode_t before = ::umask(022);
    {
        const SystemCalls seen({});
        m_file.Save(true);
        EXPECT_EQ(seen.Record().attributeCalls,
                  (Strings{"owner 65534:65532", "mask 0", "mode 4755", "mask 22"}));
    }
    ::umask(before);
    EXPECT_EQ(OwnerAndMode("target"), "65534:65532 4755");
}

TEST_F(OwnerTest, NobodyMayRunTheFileWithTheRightsOfAnotherOwnerAtAnyMoment) {
    // A left-over of the caller, runnable with his rights from the start.
    OpenOf(kUser, kGroup, 06755);
    WriteOf(0, 0, "target.tmp", "somebody else's program\n", 06755);
    std::size_t looks = 0;
    {
        const SystemCalls seen({.after = [&] {
            ++looks;
            const bool runsAsOwner = (Status("target.tmp").st_mode & kRunsAsOwner) != 0;
            EXPECT_TRUE(!runsAsOwner || Status("target.tmp").st_uid == kUser);
        }});
        m_file.Save(true);
    }
    EXPECT_GT(looks, 4U);
    EXPECT_EQ(OwnerAndMode("target"), "65534:65532 6755");
}

TEST_F(OwnerTest, PrivateFileGetsItsOwnerToo) {
    // The mode is right already: that step is left out, and not the owner with it.
    OpenOf(kUser, kGroup, 0600);
    m_file.Save(true);
    EXPECT_EQ(OwnerAndMode("target"), "65534:65532 600");
}

TEST_F(OwnerTest, GroupAloneIsKeptToo) {
    OpenOf(0, kGroup, 02755);
    m_file.Save(true);
    EXPECT_EQ(OwnerAndMode("target"), "0:65532 2755");
}

TEST_F(OwnerTest, CallersOwnFileCostsOneLookAndNoChangeOfOwner) {
    OpenOf(0, 0, 0644);
    const SystemCalls seen({});
    m_file.Save(true);
    EXPECT_EQ(seen.Record().counts,
              (std::map<std::string, std::size_t>{{"lstat", 1}, {"fstat", 1}, {"fchmod", 1}}));
}

TEST_F(OwnerTest, FileMadeFromATemplateBelongsToTheOwnerOfItsTarget) {
    WriteOf(kUser, kGroup, "target", "former\n", 0600);
    OpenTemplate(0644);
    m_file.Save(false);
    EXPECT_EQ(OwnerAndMode("target"), "65534:65532 644");
}

TEST_F(OwnerTest, OwnerOfATemplateIsGivenNothing) {
    OpenTemplate(0644);
    m_file.Save(true);
    EXPECT_EQ(OwnerAndMode("target"), "0:0 644");
    m_file.Save(true);
    EXPECT_EQ(OwnerAndMode("target"), "0:0 644");
}

TEST_F(OwnerTest, WholeModeOfATemplateIsTakenForANewFile) {
    OpenTemplate(04755);
    m_file.Save(true);
    EXPECT_EQ(OwnerAndMode("target"), "0:0 4755");
}

TEST_F(OwnerTest, WholeModeOfATemplateIsTakenForTheFileOfAUser) {
    WriteOf(kUser, kGroup, "target", "former\n", 0600);
    OpenTemplate(04755);
    m_file.Save(true);
    EXPECT_EQ(OwnerAndMode("target"), "65534:65532 4755");
}

TEST_F(OwnerTest, LinkAtTheNameOfATargetGivesTheTextToNobody) {
    WriteOf(kUser, kGroup, "lure", "a user's own\n", 0644);
    ASSERT_EQ(::symlink("lure", Path("target").c_str()), 0);
    OpenTemplate(0600);
    m_file.Save(true);
    EXPECT_EQ(OwnerAndMode("target"), "0:0 600");
    EXPECT_EQ(OwnerAndMode("lure"), "65534:65532 644");
}

TEST_F(OwnerTest, FileEditedThroughALinkIsTheCallersAndLetsNobodyActAsHim) {
    WriteOf(kUser, kGroup, "real", "x=1\n", 06755);
    ASSERT_EQ(::symlink("real", Path("target").c_str()), 0);
    OpenAs("target");
    m_file.Save(true);
    EXPECT_EQ(OwnerAndMode("target"), "0:0 755");
    EXPECT_EQ(OwnerAndMode("real"), "65534:65532 6755");
}

TEST_F(OwnerTest, OwnFileEditedThroughALinkKeepsItsWholeMode) {
    WriteOf(0, 0, "real", "x=1\n", 04755);
    ASSERT_EQ(::symlink("real", Path("target").c_str()), 0);
    OpenAs("target");
    m_file.Save(true);
    EXPECT_EQ(OwnerAndMode("target"), "0:0 4755");
}

TEST_F(OwnerTest, FileThatItsUserTookAwayDoesNotRunWithTheCallersRights) {
    OpenOf(kUser, kGroup, 06755);
    ASSERT_EQ(::unlink(Path("target").c_str()), 0);
    m_file.Save(true);
    EXPECT_EQ(OwnerAndMode("target"), "0:0 755");
}

TEST_F(OwnerTest, FileThatItsUserExchangedForAnothersDoesNotRunWithTheOthersRights) {
    OpenOf(kUser, kGroup, 06755);
    ASSERT_EQ(::unlink(Path("target").c_str()), 0);
    WriteOf(kOther, kGroup, "target", "x=1\n", 0644);
    m_file.Save(true);
    EXPECT_EQ(OwnerAndMode("target"), "65533:65532 755");
}

TEST_F(OwnerTest, FileThatItsUserExchangedForOneOfAnotherGroupDoesNotRunWithItsRights) {
    OpenOf(kUser, kGroup, 02755);
    ASSERT_EQ(::unlink(Path("target").c_str()), 0);
    WriteOf(kUser, 0, "target", "x=1\n", 0644);
    m_file.Save(true);
    EXPECT_EQ(OwnerAndMode("target"), "65534:0 755");
}

TEST_F(OwnerTest, OwnerThatCannotBeGivenCostsTheBitsThatActAsHim) {
    OpenOf(kUser, kGroup, 06751);
    {
        const SystemCalls lies({.failing = {{"fchown", EPERM}}});
        m_file.Save(true);
        EXPECT_EQ(OwnerCalls(lies), (Strings{"owner 65534:65532", "owner -1:65532"}));
    }
    EXPECT_EQ(OwnerAndMode("target"), "0:0 751");
    EXPECT_EQ(Log(), Strings{});
}

TEST_F(OwnerTest, OwnerThatCannotBeGivenCostsAFileMadeFromATemplateTheBitsToo) {
    WriteOf(kUser, kGroup, "target", "former\n", 0600);
    OpenTemplate(06755);
    const SystemCalls lies({.failing = {{"fchown", EPERM}}});
    m_file.Save(true);
    EXPECT_EQ(OwnerAndMode("target"), "0:0 755");
}

TEST_F(OwnerTest, FileThatAnOrdinaryUserReplacesBecomesHisAndKeepsAGroupOfHis) {
    WriteOf(kUser, kGroup, "target", "x=1\n", 06755);
    ASSERT_EQ(::chmod(m_directory.c_str(), 0777), 0);
    const auto code = ExitOfChild(5s, [&] {
        const gid_t groups[] = {kGroup};
        if (::setgroups(1, groups) != 0 || ::setegid(kOther) != 0 || ::seteuid(kOther) != 0)
            return kNotPossible;
        EXPECT_TRUE(m_file.Open(Path("target"), "", true));
        m_file.Save(true);
        return 0;
    });
    if (code == kNotPossible) GTEST_SKIP() << "cannot become an ordinary user";
    EXPECT_EQ(code, 0);
    EXPECT_EQ(OwnerAndMode("target"), "65533:65532 755");
}

TEST_F(OwnerTest, OwnerThatCannotBeToldIsAFailedSave) {
    OpenOf(kUser, kGroup, 0644);
    {
        const SystemCalls lies({.failing = {{"lstat", EIO}}});
        ExpectError<EZETError>("Failed to save file 'D/target.tmp'.", [&] { m_file.Save(true); });
    }
    EXPECT_EQ(Names(), Strings{"target"});
}

/// A file at the name of the temporary one.
class LeftOverOwnerTest : public OwnerTest {
  protected:
    void ExpectRefused() {
        LeavesTemporary();
        const std::string before = OwnerAndMode("target.tmp");
        ExpectError<EZETError>("Failed to save file 'D/target.tmp'.", [&] { m_file.Save(false); });
        EXPECT_EQ(Messages(), Strings{"libzet-core src/interfaces/zet-config/ZETConfigFile InternalSaveAs 1: "
                                      "Failed to save file 'D/target.tmp'."});
        EXPECT_EQ(Journal({"IsFileExist", "CreateFile", "RenameFile", "Put"}), Strings{});
        EXPECT_EQ(Read("target.tmp"), "EVIL=1\n");
        EXPECT_EQ(OwnerAndMode("target.tmp"), before);
    }
};

TEST_F(LeftOverOwnerTest, LeftOverOfSomebodyElseIsRefused) {
    OpenOf(0, 0, 0644);
    WriteOf(kUser, kGroup, "target.tmp", "EVIL=1\n", 0666);
    ExpectRefused();
    EXPECT_EQ(Read("target"), "x=1\n");
}

TEST_F(LeftOverOwnerTest, LeftOverOfSomebodyElseIsRefusedBesideTheFileOfAUser) {
    OpenOf(kUser, kGroup, 0644);
    WriteOf(kOther, kGroup, "target.tmp", "EVIL=1\n", 0666);
    ExpectRefused();
}

TEST_F(LeftOverOwnerTest, LeftOverOfSomebodyElseIsRefusedForANewFile) {
    OpenTemplate(0644);
    WriteOf(kOther, kGroup, "target.tmp", "EVIL=1\n", 0666);
    ExpectRefused();
}

TEST_F(LeftOverOwnerTest, LeftOverOfTheOneToWhomALinkLeadsIsRefused) {
    WriteOf(kUser, kGroup, "lure", "x\n", 0644);
    ASSERT_EQ(::symlink("lure", Path("target").c_str()), 0);
    OpenTemplate(0644);
    WriteOf(kUser, kGroup, "target.tmp", "EVIL=1\n", 0666);
    ExpectRefused();
}

TEST_F(LeftOverOwnerTest, LeftOverOfTheTargetsOwnerIsTaken) {
    OpenOf(kUser, kGroup, 0640);
    WriteOf(kUser, kOther, "target.tmp", "left over\n", 0644);
    m_file.Save(true);
    EXPECT_EQ(OwnerAndMode("target"), "65534:65532 640");
    EXPECT_EQ(Read("target"), "x=1\n");
}

TEST_F(LeftOverOwnerTest, LeftOverOfTheCallerIsTakenAndGivenToTheTargetsOwner) {
    OpenOf(kUser, kGroup, 0640);
    WriteOf(0, 0, "target.tmp", "left over\n", 0644);
    m_file.Save(true);
    EXPECT_EQ(OwnerAndMode("target"), "65534:65532 640");
}

}  // namespace
}  // namespace ZET
