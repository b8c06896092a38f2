#include "ModuleTest.h"
#include "ZETConfig.h"

namespace ZET {
namespace {

/// The operations of the manager that hand out files, and the installation of working copies.
class OpenConfigFileTest : public ModuleTest {
  protected:
    OpenConfigFileTest() { m_core.Forget(); }

    Strings Helpers() const {
        return Journal(
            {"GetParam", "IsFileExist", "CreateFile", "RemoveFile", "RenameFile", "CopyFile", "Put"});
    }

    CZETConfig m_config{m_core};
};

TEST_F(OpenConfigFileTest, ReadableFileIsHandedOutToBeOwnedByTheCallerAlone) {
    const auto file = m_config.OpenConfigFile(Write("a.conf", "x=1\n"), "server", false);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file.use_count(), 1);
    EXPECT_EQ(file->GetLine("x"), "x=1");
    EXPECT_NE(dynamic_cast<CZETConfigFile*>(file.get()), nullptr);
}

TEST_F(OpenConfigFileTest, FileThatCannotBeOpenedGivesAnEmptyPointerAndALogRecord) {
    EXPECT_EQ(m_config.OpenConfigFile(Path("missing"), "", false), nullptr);
    EXPECT_EQ(Log(), (Strings{"2 Process config file 'D/missing'...", "0 Failed to open file 'D/missing'."}));
}

TEST_F(OpenConfigFileTest, OpeningAFileAsksTheCoreForNothing) {
    m_config.OpenConfigFile(Write("a.conf", "x\n"), "", false);
    EXPECT_EQ(Helpers(), Strings{"Put 2 Process config file 'D/a.conf'..."});
}

TEST_F(OpenConfigFileTest, EmptyFileNameIsRefusedByTheFile) {
    ExpectError<EZETCheckError>("Argument is empty for 'InternalOpen'.",
                                [&] { m_config.OpenConfigFile("", "server", false); });
}

TEST_F(OpenConfigFileTest, FlagForNoMarkersReachesTheFile) {
    const std::string path = Write("a.conf", "x\n");
    m_config.OpenConfigFile(path, "", true)->Save(true);
    EXPECT_EQ(Read("a.conf"), "x\n");
    m_config.OpenConfigFile(path, "", false)->Save(true);
    EXPECT_EQ(Read("a.conf"), kPartialNotice + "x\n");
}

TEST_F(OpenConfigFileTest, FileMayOutliveTheManager) {
    auto config = std::make_unique<CZETConfig>(m_core);
    const auto file = config->OpenConfigFile(Write("a.conf", "x\n"), "", true);
    config.reset();
    file->Save(true);
    EXPECT_EQ(Read("a.conf"), "x\n");
}

TEST_F(OpenConfigFileTest, TemplateWithAWorkingCopyIsOpened) {
    Write("cfg/t.conf", "working\n");
    Write("templ/t.conf", "pristine\n");
    m_core.Forget();
    const auto file = m_config.OpenConfigFileTemplate("t.conf", Path("target"), "server", false);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file.use_count(), 1);
    EXPECT_EQ(Helpers(), (Strings{"GetParam ZET_CFG_DIR", "IsFileExist D/cfg/t.conf", "GetParam ZET_CFG_DIR",
                                  "Put 2 Process config file template 'D/cfg/t.conf' to 'D/target'..."}));
    EXPECT_EQ(file->GetLine("."), "working");
}

TEST_F(OpenConfigFileTest, MissingWorkingCopyIsInstalledFirst) {
    Write("templ/t.conf", "pristine\n");
    m_core.Forget();
    const auto file = m_config.OpenConfigFileTemplate("t.conf", Path("target"), "server", false);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(Helpers(),
              (Strings{"GetParam ZET_CFG_DIR", "IsFileExist D/cfg/t.conf", "GetParam ZET_CFG_TEMPL_DIR",
                       "GetParam ZET_CFG_DIR", "IsFileExist D/templ/t.conf",
                       "CopyFile D/templ/t.conf D/cfg/t.conf", "GetParam ZET_CFG_DIR",
                       "Put 2 Process config file template 'D/cfg/t.conf' to 'D/target'..."}));
    EXPECT_EQ(Read("cfg/t.conf"), "pristine\n");
    EXPECT_EQ(file->GetLine("."), "pristine");
}

TEST_F(OpenConfigFileTest, TemplateMissingInBothPlacesGivesTwoErrorRecordsAndAnEmptyPointer) {
    EXPECT_EQ(m_config.OpenConfigFileTemplate("t.conf", Path("target"), "server", false), nullptr);
    EXPECT_EQ(Log(), (Strings{"0 Config file 'D/templ/t.conf' doesn't exist.",
                              "2 Process config file template 'D/cfg/t.conf' to 'D/target'...",
                              "0 Failed to open file 'D/cfg/t.conf'."}));
}

TEST_F(OpenConfigFileTest, RoleAndFlagReachTheTemplate) {
    Write("cfg/t.conf", "x\n");
    m_config.OpenConfigFileTemplate("t.conf", Path("target"), "server", false)->Save(true);
    EXPECT_EQ(Read("target"), GeneratedNotice(Path("cfg/t.conf"), "zet-init") + "x\n");
    m_config.OpenConfigFileTemplate("t.conf", Path("target"), "server", true)->Save(true);
    EXPECT_EQ(Read("target"), "x\n");
}

TEST_F(OpenConfigFileTest, EmptyTemplateNameIsRefusedBeforeTheCoreIsAsked) {
    m_core.Forget();
    ExpectError<EZETCheckError>("Argument is empty for 'OpenConfigFileTemplate'.",
                                [&] { m_config.OpenConfigFileTemplate("", Path("target"), "", false); });
    EXPECT_EQ(Helpers(), Strings{});
    EXPECT_EQ(Messages(), Strings{"libzet-core src/interfaces/zet-config/ZETConfig OpenConfigFileTemplate 1: "
                                  "Argument is empty for 'OpenConfigFileTemplate'."});
    EXPECT_EQ(m_core.Messages().at(0).line, 80U);
}

TEST_F(OpenConfigFileTest, EmptyTargetNameIsRefusedByTheFile) {
    Write("cfg/t.conf", "x\n");
    ExpectError<EZETCheckError>("Argument is empty for 'OpenTemplate'.",
                                [&] { m_config.OpenConfigFileTemplate("t.conf", "", "", false); });
}

TEST_F(OpenConfigFileTest, EmptyTargetNameIsRefusedOnlyAfterTheInstallation) {
    Write("templ/t.conf", "x\n");
    EXPECT_THROW(m_config.OpenConfigFileTemplate("t.conf", "", "", false), EZETCheckError);
    EXPECT_EQ(Read("cfg/t.conf"), "x\n");
}

TEST_F(OpenConfigFileTest, FailuresOfTheCorePassThrough) {
    Write("templ/t.conf", "x\n");
    for (const char* call :
         {"GetParam ZET_CFG_DIR", "IsFileExist", "GetParam ZET_CFG_TEMPL_DIR", "CopyFile"}) {
        m_core.FailAt(call);
        ExpectScriptedFailure(call, [&] { m_config.OpenConfigFileTemplate("t.conf", Path("t"), "", false); });
        EXPECT_FALSE(Exists("cfg/t.conf"));
    }
}

TEST_F(OpenConfigFileTest, InstallingReplacesTheWorkingCopy) {
    Write("cfg/t.conf", "edited, and longer than the other one\n");
    Write("templ/t.conf", "pristine\n");
    m_core.Forget();
    m_config.InstallConfigFileTemplate("t.conf");
    EXPECT_EQ(Read("cfg/t.conf"), "pristine\n");
    EXPECT_EQ(Helpers(), (Strings{"GetParam ZET_CFG_TEMPL_DIR", "GetParam ZET_CFG_DIR",
                                  "IsFileExist D/templ/t.conf", "CopyFile D/templ/t.conf D/cfg/t.conf"}));
}

TEST_F(OpenConfigFileTest, InstallingAMissingTemplateLogsOneErrorAndChangesNothing) {
    Write("cfg/t.conf", "edited\n");
    m_core.Forget();
    m_config.InstallConfigFileTemplate("t.conf");
    EXPECT_EQ(Helpers(),
              (Strings{"GetParam ZET_CFG_TEMPL_DIR", "GetParam ZET_CFG_DIR", "IsFileExist D/templ/t.conf",
                       "Put 0 Config file 'D/templ/t.conf' doesn't exist."}));
    EXPECT_EQ(Messages(),
              Strings{"libzet-config src/interfaces/zet-config/ZETConfig InstallConfigFileTemplate 1: "
                      "Config file 'D/templ/t.conf' doesn't exist."});
    EXPECT_EQ(m_core.Messages().at(0).line, 138U);
    EXPECT_EQ(Read("cfg/t.conf"), "edited\n");
}

TEST_F(OpenConfigFileTest, InstallingAnEmptyNameIsLeftToTheCore) {
    m_core.SetParam("ZET_CFG_TEMPL_DIR", Path("missing"));
    m_core.Forget();
    m_config.InstallConfigFileTemplate("");
    EXPECT_EQ(Log(), Strings{"0 Config file 'D/missing/' doesn't exist."});
}

TEST_F(OpenConfigFileTest, PathsAreJoinedWithoutNormalisation) {
    m_core.SetParam("ZET_CFG_TEMPL_DIR", Path("templ/"));
    m_core.Forget();
    m_config.InstallConfigFileTemplate("/sub/t.conf");
    EXPECT_EQ(Log(), Strings{"0 Config file 'D/templ///sub/t.conf' doesn't exist."});
}

/// Notes the installation instead of doing it.
class NotingInstaller : public CZETConfig {
  public:
    using CZETConfig::CZETConfig;
    void InstallConfigFileTemplate(const std::string& templateName) override {
        installed.push_back(templateName);
    }
    Strings installed;
};

TEST_F(OpenConfigFileTest, InstallationIsCalledThroughItsVirtualOperation) {
    NotingInstaller config(m_core);
    EXPECT_EQ(config.OpenConfigFileTemplate("sub/t.conf", Path("target"), "", false), nullptr);
    EXPECT_EQ(config.installed, Strings{"sub/t.conf"});
    Write("cfg/here", "x\n");
    EXPECT_NE(config.OpenConfigFileTemplate("here", Path("target"), "", false), nullptr);
    EXPECT_EQ(config.installed.size(), 1U);
}

}  // namespace
}  // namespace ZET
