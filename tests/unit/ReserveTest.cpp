#include "ModuleTest.h"
#include "ZETConfig.h"

namespace ZET {
namespace {

class ReserveTest : public ModuleTest {
  protected:
    ReserveTest() { m_core.Forget(); }

    std::string File() const { return Path("f"); }

    CZETConfig m_config{m_core};
};

TEST_F(ReserveTest, ExistingFileIsCopied) {
    Write("f", "original\n");
    m_config.ReserveConfigFile(File());
    EXPECT_EQ(Journal(), (Strings{"IsFileExist D/f", "IsFileExist D/f.before_zet",
                                  "IsFileExist D/f.no_file_before_zet", "CopyFile D/f D/f.before_zet"}));
    EXPECT_EQ(Read("f"), "original\n");
    EXPECT_EQ(Read("f.before_zet"), "original\n");
    EXPECT_EQ(Names(), (Strings{"f", "f.before_zet"}));
}

TEST_F(ReserveTest, SecondReservationKeepsTheFirst) {
    Write("f", "original\n");
    m_config.ReserveConfigFile(File());
    Write("f", "edited\n");
    m_core.Forget();
    m_config.ReserveConfigFile(File());
    EXPECT_EQ(Journal(), (Strings{"IsFileExist D/f", "IsFileExist D/f.before_zet"}));
    EXPECT_EQ(Read("f.before_zet"), "original\n");
}

TEST_F(ReserveTest, MissingFileIsRecordedAsAbsentWithoutLookingFurther) {
    m_config.ReserveConfigFile(File());
    EXPECT_EQ(Journal(), (Strings{"IsFileExist D/f", "CreateFile D/f.no_file_before_zet"}));
    EXPECT_EQ(Names(), Strings{"f.no_file_before_zet"});
    EXPECT_EQ(Read("f.no_file_before_zet"), "");
}

TEST_F(ReserveTest, FileThatWasRecordedAsAbsentIsNeverCopied) {
    m_config.ReserveConfigFile(File());
    Write("f", "made by the system\n");
    m_core.Forget();
    m_config.ReserveConfigFile(File());
    EXPECT_EQ(Journal(), (Strings{"IsFileExist D/f", "IsFileExist D/f.before_zet",
                                  "IsFileExist D/f.no_file_before_zet"}));
    EXPECT_EQ(Names(), (Strings{"f", "f.no_file_before_zet"}));
}

TEST_F(ReserveTest, AbsenceIsRecordedAgainAsOftenAsAsked) {
    m_config.ReserveConfigFile(File());
    m_config.ReserveConfigFile(File());
    EXPECT_EQ(Journal({"CreateFile"}).size(), 2U);
}

TEST_F(ReserveTest, MissingFileWithAReserveIsRecordedAsAbsentBesideIt) {
    Write("f.before_zet", "original\n");
    m_config.ReserveConfigFile(File());
    EXPECT_EQ(Names(), (Strings{"f.before_zet", "f.no_file_before_zet"}));
    EXPECT_EQ(Read("f.before_zet"), "original\n");
}

TEST_F(ReserveTest, RestoringPutsTheReserveBack) {
    Write("f", "edited\n");
    Write("f.before_zet", "original\n");
    m_config.RestoreConfigFile(File());
    EXPECT_EQ(Journal(), (Strings{"IsFileExist D/f.before_zet", "RenameFile D/f.before_zet D/f",
                                  "IsFileExist D/f.no_file_before_zet"}));
    EXPECT_EQ(Read("f"), "original\n");
    EXPECT_EQ(Names(), Strings{"f"});
}

TEST_F(ReserveTest, RestoringAnAbsentFileDropsOnlyTheRecord) {
    Write("f", "made by the system\n");
    Write("f.no_file_before_zet", "");
    m_config.RestoreConfigFile(File());
    EXPECT_EQ(Journal(), (Strings{"IsFileExist D/f.before_zet", "IsFileExist D/f.no_file_before_zet",
                                  "RemoveFile D/f.no_file_before_zet"}));
    EXPECT_EQ(Names(), Strings{"f"});
    EXPECT_EQ(Read("f"), "made by the system\n");
}

TEST_F(ReserveTest, RestoringWithBothCompanionsDoesBoth) {
    Write("f.before_zet", "original\n");
    Write("f.no_file_before_zet", "");
    m_config.RestoreConfigFile(File());
    EXPECT_EQ(Journal({"RenameFile", "RemoveFile"}),
              (Strings{"RenameFile D/f.before_zet D/f", "RemoveFile D/f.no_file_before_zet"}));
    EXPECT_EQ(Names(), Strings{"f"});
}

TEST_F(ReserveTest, RestoringWithoutCompanionsDoesNothing) {
    Write("f", "x\n");
    m_config.RestoreConfigFile(File());
    EXPECT_EQ(Journal(), (Strings{"IsFileExist D/f.before_zet", "IsFileExist D/f.no_file_before_zet"}));
    EXPECT_EQ(Read("f"), "x\n");
}

TEST_F(ReserveTest, DroppingTheReserveKeepsTheFile) {
    Write("f", "edited\n");
    Write("f.before_zet", "original\n");
    Write("f.no_file_before_zet", "");
    m_config.RemoveConfigFileReserve(File());
    EXPECT_EQ(Journal(),
              (Strings{"IsFileExist D/f.before_zet", "RemoveFile D/f.before_zet",
                       "IsFileExist D/f.no_file_before_zet", "RemoveFile D/f.no_file_before_zet"}));
    EXPECT_EQ(Names(), Strings{"f"});
    EXPECT_EQ(Read("f"), "edited\n");
}

TEST_F(ReserveTest, DroppingTheRecordOfAbsenceAloneKeepsTheFile) {
    Write("f", "x\n");
    Write("f.no_file_before_zet", "");
    m_config.RemoveConfigFileReserve(File());
    EXPECT_EQ(Names(), Strings{"f"});
}

TEST_F(ReserveTest, DroppingWithoutCompanionsDoesNothing) {
    m_config.RemoveConfigFileReserve(File());
    EXPECT_EQ(Journal(), (Strings{"IsFileExist D/f.before_zet", "IsFileExist D/f.no_file_before_zet"}));
}

TEST_F(ReserveTest, NothingIsEverReported) {
    m_config.ReserveConfigFile(File());
    m_config.RestoreConfigFile(File());
    m_config.RemoveConfigFileReserve(File());
    EXPECT_EQ(Journal({"Translate", "Format", "Put"}), Strings{});
}

TEST_F(ReserveTest, FailedCopyPassesThrough) {
    Write("f", "x\n");
    m_core.FailAt("CopyFile");
    ExpectScriptedFailure("CopyFile", [&] { m_config.ReserveConfigFile(File()); });
    EXPECT_EQ(Names(), Strings{"f"});
}

TEST_F(ReserveTest, FailedRecordPassesThrough) {
    m_core.FailAt("CreateFile");
    ExpectScriptedFailure("CreateFile", [&] { m_config.ReserveConfigFile(File()); });
}

TEST_F(ReserveTest, FailedRenameLeavesTheRecordOfAbsence) {
    Write("f.before_zet", "original\n");
    Write("f.no_file_before_zet", "");
    m_core.FailAt("RenameFile");
    ExpectScriptedFailure("RenameFile", [&] { m_config.RestoreConfigFile(File()); });
    EXPECT_EQ(Names(), (Strings{"f.before_zet", "f.no_file_before_zet"}));
    EXPECT_EQ(Journal().back(), "RenameFile D/f.before_zet D/f");
}

TEST_F(ReserveTest, FailedRemovalOfTheReserveLeavesTheRecordOfAbsence) {
    Write("f.before_zet", "original\n");
    Write("f.no_file_before_zet", "");
    m_core.FailAt("RemoveFile");
    ExpectScriptedFailure("RemoveFile", [&] { m_config.RemoveConfigFileReserve(File()); });
    EXPECT_EQ(Names(), (Strings{"f.before_zet", "f.no_file_before_zet"}));
}

TEST_F(ReserveTest, FailureToLookPassesThrough) {
    m_core.FailAt("IsFileExist");
    ExpectScriptedFailure("IsFileExist", [&] { m_config.ReserveConfigFile(File()); });
    m_core.FailAt("IsFileExist", 2);
    ExpectScriptedFailure("IsFileExist", [&] { m_config.RestoreConfigFile(File()); });
    m_core.FailAt("IsFileExist");
    ExpectScriptedFailure("IsFileExist", [&] { m_config.RemoveConfigFileReserve(File()); });
}

TEST_F(ReserveTest, RemovingMarkersTakesTheBlocksOutAndLeavesNoticeAndReserve) {
    const std::string text = "a\n" + kFormer + "x=1\n" + kBegin + "x=2\n" + kEnd + "b\n";
    Write("f", text, 0640);
    m_config.RemoveZETMarkersFromConfigFile(File());
    EXPECT_EQ(Read("f"), kPartialNotice + "a\n" + kFormer + "x=1\nb\n");
    EXPECT_EQ(Mode("f"), 0640U);
    EXPECT_EQ(Read("f.before_zet"), text);
    EXPECT_EQ(Names(), (Strings{"f", "f.before_zet"}));
}

TEST_F(ReserveTest, RemovingMarkersFromAFileWithANoticeLeavesOneNotice) {
    Write("f", kPartialNotice + "a\n");
    Write("f.before_zet", "original\n");
    m_config.RemoveZETMarkersFromConfigFile(File());
    EXPECT_EQ(Read("f"), kPartialNotice + "a\n");
    EXPECT_EQ(Read("f.before_zet"), "original\n");
}

TEST_F(ReserveTest, RemovingMarkersFromAFileThatCannotBeOpenedDoesNothingMore) {
    m_config.RemoveZETMarkersFromConfigFile(File());
    EXPECT_EQ(Log(), (Strings{"2 Process config file 'D/f'...", "0 Failed to open file 'D/f'."}));
    EXPECT_EQ(Names(), Strings{});
}

TEST_F(ReserveTest, RemovingMarkersPassesFailuresOfTheSaveThrough) {
    LeavesTemporary();
    Write("f", "a\n");
    m_core.FailAt("RenameFile");
    ExpectScriptedFailure("RenameFile", [&] { m_config.RemoveZETMarkersFromConfigFile(File()); });
    ExpectError<EZETCheckError>("Argument is empty for 'InternalOpen'.",
                                [&] { m_config.RemoveZETMarkersFromConfigFile(""); });
}

}  // namespace
}  // namespace ZET
