#include <sys/stat.h>

#include "ModuleTest.h"
#include "ZETConfig.h"

namespace ZET {
namespace {

/// Parameters of the product's main configuration file, D/zet.conf.
class UpdateParamTest : public ModuleTest {
  protected:
    UpdateParamTest() { m_core.Forget(); }

    CZETConfig m_config{m_core};
};

TEST_F(UpdateParamTest, ParameterIsWrittenToTheFileAndThenToTheCore) {
    Write("zet.conf", "A=1\n", 0640);
    EXPECT_TRUE(m_config.UpdateConfigFileParam("A", "2"));
    EXPECT_EQ(
        Journal({"GetParam", "Put", "MatchRegEx", "IsFileExist", "CreateFile", "RenameFile", "UpdateParam"}),
        (Strings{"GetParam ZET_CFG", "Put 2 Process config file 'D/zet.conf'...",
                 "MatchRegEx ^#*\\s*A= in A=1", "RenameFile D/zet.conf.tmp D/zet.conf", "UpdateParam A=2"}));
    EXPECT_EQ(Read("zet.conf"), "A=2\n");
    EXPECT_EQ(Mode("zet.conf"), 0640U);
}

TEST_F(UpdateParamTest, FileGetsNoNoticeAndNoCompanion) {
    Write("zet.conf", "\nA=1\n");
    EXPECT_TRUE(m_config.UpdateConfigFileParam("B", "2"));
    EXPECT_EQ(Read("zet.conf"), "\nA=1\n\nB=2\n");
    EXPECT_EQ(Names(), Strings{"zet.conf"});
}

TEST_F(UpdateParamTest, CommentedOutLinesAreReplacedToo) {
    Write("zet.conf", "#A=0\nA=1\n");
    EXPECT_TRUE(m_config.UpdateConfigFileParam("A", "2"));
    EXPECT_EQ(Read("zet.conf"), "A=2\nA=2\n");
}

TEST_F(UpdateParamTest, EmptyValueIsWritten) {
    Write("zet.conf", "A=1\n");
    EXPECT_TRUE(m_config.UpdateConfigFileParam("A", ""));
    EXPECT_EQ(Read("zet.conf"), "A=\n");
    EXPECT_EQ(Journal().back(), "UpdateParam A=");
}

TEST_F(UpdateParamTest, NameOfTheFileParameterIsChangedLikeAnyOther) {
    Write("zet.conf", "ZET_CFG=x\n");
    EXPECT_TRUE(m_config.UpdateConfigFileParam("ZET_CFG", "/elsewhere"));
    EXPECT_EQ(Read("zet.conf"), "ZET_CFG=/elsewhere\n");
    EXPECT_FALSE(Exists("elsewhere"));
}

TEST_F(UpdateParamTest, FileThatCannotBeOpenedGivesFalseAndLeavesTheCore) {
    EXPECT_FALSE(m_config.UpdateConfigFileParam("A", "2"));
    EXPECT_EQ(Log(),
              (Strings{"2 Process config file 'D/zet.conf'...", "0 Failed to open file 'D/zet.conf'."}));
    EXPECT_EQ(Journal({"UpdateParam", "RenameFile"}), Strings{});
    EXPECT_EQ(Names(), Strings{});
}

TEST_F(UpdateParamTest, EmptyPathOfTheFileIsRefused) {
    m_core.SetParam("ZET_CFG", "");
    ExpectError<EZETCheckError>("Argument is empty for 'InternalOpen'.",
                                [&] { m_config.UpdateConfigFileParam("A", "2"); });
}

TEST_F(UpdateParamTest, EmptyNameIsRefusedAndNothingChanges) {
    Write("zet.conf", "A=1\n");
    ExpectError<EZETCheckError>("Argument is empty for 'SetParamValue'.",
                                [&] { m_config.UpdateConfigFileParam("", "2"); });
    EXPECT_EQ(Read("zet.conf"), "A=1\n");
    EXPECT_EQ(Journal({"UpdateParam"}), Strings{});
}

TEST_F(UpdateParamTest, FailedSaveLeavesTheCoresValue) {
    LeavesTemporary();
    Write("zet.conf", "A=1\n");
    ASSERT_EQ(::mkdir(Path("zet.conf.tmp").c_str(), 0755), 0);
    ExpectError<EZETError>("Failed to save file 'D/zet.conf.tmp'.",
                           [&] { m_config.UpdateConfigFileParam("A", "2"); });
    EXPECT_EQ(Journal({"UpdateParam"}), Strings{});
    EXPECT_EQ(Read("zet.conf"), "A=1\n");
}

TEST_F(UpdateParamTest, FailedRenameLeavesTheCoresValue) {
    LeavesTemporary();
    Write("zet.conf", "A=1\n");
    m_core.FailAt("RenameFile");
    ExpectScriptedFailure("RenameFile", [&] { m_config.UpdateConfigFileParam("A", "2"); });
    EXPECT_EQ(Journal({"UpdateParam"}), Strings{});
}

TEST_F(UpdateParamTest, FailureOfTheCoresUpdatePassesThroughAfterTheFileIsWritten) {
    Write("zet.conf", "A=1\n");
    m_core.FailAt("UpdateParam");
    ExpectScriptedFailure("UpdateParam", [&] { m_config.UpdateConfigFileParam("A", "2"); });
    EXPECT_EQ(Read("zet.conf"), "A=2\n");
}

/// The file is opened by an object of its own, not through the manager's opening.
class ClosedConfig : public CZETConfig {
  public:
    using CZETConfig::CZETConfig;
    std::shared_ptr<IZETConfigFile> OpenConfigFile(const std::string&, const std::string&, bool) override {
        return nullptr;
    }
};

TEST_F(UpdateParamTest, ManagersOpeningPlaysNoPart) {
    Write("zet.conf", "A=1\n");
    ClosedConfig config(m_core);
    EXPECT_TRUE(config.UpdateConfigFileParam("A", "2"));
    EXPECT_EQ(Read("zet.conf"), "A=2\n");
}

}  // namespace
}  // namespace ZET
