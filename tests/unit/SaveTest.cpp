#include <sys/stat.h>
#include <unistd.h>

#include "ModuleTest.h"

namespace ZET {
namespace {

constexpr char kTarget[] = "target";

class SaveTest : public ModuleTest {
  protected:
    /// A file edited in place, D/target.
    void Open(const std::string& text, bool noMarkers = false, mode_t mode = 0644) {
        ASSERT_TRUE(m_file.Open(Write(kTarget, text, mode), "server", noMarkers));
        m_core.Forget();
    }

    /// A template D/cfg/t.conf to become D/target.
    void OpenTemplate(const std::string& text, bool noMarkers = false, mode_t mode = 0644) {
        Write("cfg/t.conf", text, mode);
        ASSERT_TRUE(m_file.OpenTemplate("t.conf", Path(kTarget), "server", noMarkers));
        m_core.Forget();
    }

    Strings Helpers() const {
        return Journal({"IsFileExist", "CreateFile", "RemoveFile", "RenameFile", "CopyFile"});
    }

    CZETConfigFile m_file{m_core};
};

TEST_F(SaveTest, FileEditedInPlaceGetsTheNoticeOfAPartiallyModifiedFile) {
    Open("x=1\n");
    m_file.Save(false);
    EXPECT_EQ(Read(kTarget), kPartialNotice + "x=1\n");
}

TEST_F(SaveTest, FileMadeFromATemplateGetsTheGeneratedNotice) {
    OpenTemplate("x=1\n");
    m_file.Save(false);
    EXPECT_EQ(Read(kTarget), GeneratedNotice(Path("cfg/t.conf"), "zet-init") + "x=1\n");
    EXPECT_EQ(Read("cfg/t.conf"), "x=1\n");
}

TEST_F(SaveTest, WithoutMarkersNoNoticeIsWritten) {
    Open("x=1\n", true);
    m_file.Save(false);
    EXPECT_EQ(Read(kTarget), "x=1\n");
}

TEST_F(SaveTest, TemplateWithoutMarkersLosesItsCommentBlocksAllTheSame) {
    OpenTemplate("a\n" + kTemplateComment + "hidden\n" + kCommentEnd + "b\n", true);
    m_file.Save(false);
    EXPECT_EQ(Read(kTarget), "a\nb\n");
}

TEST_F(SaveTest, TemplateCommentBlockAtTheTopLeavesTheNoticeInItsPlace) {
    OpenTemplate(kTemplateComment + "hidden\n" + kCommentEnd + "b\n");
    m_file.Save(false);
    EXPECT_EQ(Read(kTarget), GeneratedNotice(Path("cfg/t.conf"), "zet-init") + "b\n");
}

TEST_F(SaveTest, TemplateCommentBlockOfAFileEditedInPlaceStays) {
    const std::string text = "a\n" + kTemplateComment + "kept\n" + kCommentEnd;
    Open(text, true);
    m_file.Save(false);
    EXPECT_EQ(Read(kTarget), text);
}

TEST_F(SaveTest, EmptyTemplateBecomesOneLineFeed) {
    OpenTemplate("");
    m_file.Save(false);
    EXPECT_EQ(Read(kTarget), "\n");
}

TEST_F(SaveTest, MissingFinalLineFeedStaysMissing) {
    Open("a\nb");
    m_file.Save(false);
    EXPECT_EQ(Read(kTarget), kPartialNotice + "a\nb");
}

TEST_F(SaveTest, EmptyLinesAtTheEndStay) {
    Open("a\n\n\n");
    m_file.Save(false);
    EXPECT_EQ(Read(kTarget), kPartialNotice + "a\n\n\n");
}

TEST_F(SaveTest, FirstSaveOverAFileMovesItToItsReserve) {
    Open("old\n");
    m_file.Save(false);
    EXPECT_EQ(Helpers(),
              (Strings{"IsFileExist D/target", "IsFileExist D/target.before_zet",
                       "IsFileExist D/target.no_file_before_zet", "RenameFile D/target D/target.before_zet",
                       "RenameFile D/target.tmp D/target"}));
    EXPECT_EQ(Read("target.before_zet"), "old\n");
    EXPECT_EQ(Names(), (Strings{"target", "target.before_zet"}));
}

TEST_F(SaveTest, FormerTargetOfATemplateBecomesTheReserve) {
    Write(kTarget, "former\n", 0600);
    OpenTemplate("new\n", true);
    m_file.Save(false);
    EXPECT_EQ(Read("target.before_zet"), "former\n");
    EXPECT_EQ(Mode("target.before_zet"), 0600U);
    EXPECT_EQ(Read(kTarget), "new\n");
}

TEST_F(SaveTest, ReserveThatIsThereIsNeverOverwritten) {
    Write("target.before_zet", "original\n");
    Open("changed\n", true);
    m_file.Save(false);
    EXPECT_EQ(Helpers(), (Strings{"IsFileExist D/target", "IsFileExist D/target.before_zet",
                                  "RenameFile D/target.tmp D/target"}));
    EXPECT_EQ(Read("target.before_zet"), "original\n");
    EXPECT_EQ(Read(kTarget), "changed\n");
}

TEST_F(SaveTest, FileWhoseAbsenceIsRecordedGetsNoReserve) {
    Write("target.no_file_before_zet", "");
    Open("changed\n", true);
    m_file.Save(false);
    EXPECT_EQ(Helpers(),
              (Strings{"IsFileExist D/target", "IsFileExist D/target.before_zet",
                       "IsFileExist D/target.no_file_before_zet", "RenameFile D/target.tmp D/target"}));
    EXPECT_EQ(Names(), (Strings{"target", "target.no_file_before_zet"}));
}

TEST_F(SaveTest, NewTargetIsRecordedAsAbsentBefore) {
    OpenTemplate("x\n");
    m_file.Save(false);
    EXPECT_EQ(Helpers(), (Strings{"IsFileExist D/target", "CreateFile D/target.no_file_before_zet",
                                  "RenameFile D/target.tmp D/target"}));
    EXPECT_EQ(Names(), (Strings{"target", "target.no_file_before_zet"}));
    EXPECT_EQ(Read("target.no_file_before_zet"), "");
}

TEST_F(SaveTest, SecondSaveOfANewTargetMakesNoReserve) {
    OpenTemplate("x\n");
    m_file.Save(false);
    m_core.Forget();
    m_file.Save(false);
    EXPECT_EQ(Helpers(),
              (Strings{"IsFileExist D/target", "IsFileExist D/target.before_zet",
                       "IsFileExist D/target.no_file_before_zet", "RenameFile D/target.tmp D/target"}));
    EXPECT_EQ(Names(), (Strings{"target", "target.no_file_before_zet"}));
}

TEST_F(SaveTest, AbsenceIsRecordedAgainWhenTheTargetIsGoneAgain) {
    OpenTemplate("x\n");
    m_file.Save(false);
    ASSERT_EQ(::unlink(Path(kTarget).c_str()), 0);
    m_core.Forget();
    m_file.Save(false);
    EXPECT_EQ(Helpers().at(1), "CreateFile D/target.no_file_before_zet");
}

TEST_F(SaveTest, FileThatVanishedAfterOpeningIsRecordedAsAbsent) {
    Open("x\n", true);
    ASSERT_EQ(::unlink(Path(kTarget).c_str()), 0);
    m_file.Save(false);
    EXPECT_EQ(Names(), (Strings{"target", "target.no_file_before_zet"}));
    EXPECT_EQ(Read(kTarget), "x\n");
}

TEST_F(SaveTest, ReserveStaysBesideANewRecordOfAbsence) {
    Write("target.before_zet", "original\n");
    OpenTemplate("x\n", true);
    m_file.Save(false);
    EXPECT_EQ(Names(), (Strings{"target", "target.before_zet", "target.no_file_before_zet"}));
    EXPECT_EQ(Read("target.before_zet"), "original\n");
}

TEST_F(SaveTest, WithoutBackupNoCompanionIsTouchedOrLookedFor) {
    Open("x\n");
    m_file.Save(true);
    EXPECT_EQ(Helpers(), Strings{"RenameFile D/target.tmp D/target"});
    EXPECT_EQ(Names(), Strings{kTarget});
}

TEST_F(SaveTest, WithoutBackupANewTargetIsNotRecordedAsAbsent) {
    OpenTemplate("x\n");
    m_file.Save(true);
    EXPECT_EQ(Names(), Strings{kTarget});
}

TEST_F(SaveTest, LinkAsTargetIsItselfMovedAndReplaced) {
    Write("real", "x\n");
    ASSERT_EQ(::symlink("real", Path("link").c_str()), 0);
    ASSERT_TRUE(m_file.Open(Path("link"), "", false));
    m_file.Save(false);
    EXPECT_EQ(Read("link"), kPartialNotice + "x\n");
    EXPECT_EQ(Read("real"), "x\n");
    struct stat status = {};
    ASSERT_EQ(::lstat(Path("link").c_str(), &status), 0);
    EXPECT_TRUE(S_ISREG(status.st_mode));
    ASSERT_EQ(::lstat(Path("link.before_zet").c_str(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
}

TEST_F(SaveTest, HardLinksOfTheTargetKeepTheOldText) {
    Open("x\n");
    ASSERT_EQ(::link(Path(kTarget).c_str(), Path("other").c_str()), 0);
    m_file.Save(true);
    EXPECT_EQ(Read("other"), "x\n");
}

TEST_F(SaveTest, ModeOfAFileEditedInPlaceStays) {
    Open("x\n", false, 0640);
    m_file.Save(false);
    EXPECT_EQ(Mode(kTarget), 0640U);
}

TEST_F(SaveTest, ModeOfTheTemplateWinsOverThatOfTheFormerTarget) {
    Write(kTarget, "former\n", 0600);
    OpenTemplate("x\n", false, 0644);
    m_file.Save(false);
    EXPECT_EQ(Mode(kTarget), 0644U);
}

TEST_F(SaveTest, WholeModeWordIsTaken) {
    Open("x\n", false, 04751);
    m_file.Save(false);
    EXPECT_EQ(Mode(kTarget), 04751U);
}

TEST_F(SaveTest, ModeIsTheOneThatWasReadAtOpening) {
    Open("x\n", false, 0640);
    ASSERT_EQ(::chmod(Path(kTarget).c_str(), 0666), 0);
    m_file.Save(true);
    EXPECT_EQ(Mode(kTarget), 0640U);
    ASSERT_EQ(::chmod(Path(kTarget).c_str(), 0666), 0);
    m_file.Save(true);
    EXPECT_EQ(Mode(kTarget), 0640U);
}

TEST_F(SaveTest, TextIsTheOneThatWasReadAtOpening) {
    Open("x\n", true);
    Write(kTarget, "changed by somebody else\n");
    m_file.Save(true);
    EXPECT_EQ(Read(kTarget), "x\n");
}

TEST_F(SaveTest, SaveSaysNothing) {
    Open("x\n");
    m_file.Save(false);
    EXPECT_EQ(Log(), Strings{});
}

}  // namespace
}  // namespace ZET
