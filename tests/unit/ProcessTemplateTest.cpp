#include "FakeFile.h"
#include "ModuleTest.h"
#include "ZETConfig.h"

namespace ZET {
namespace {

class ProcessTemplateTest : public ModuleTest {
  protected:
    ProcessTemplateTest() {
        m_core.SetParam("REALM", "EXAMPLE.ORG");
        m_core.SetServerName("srv");
    }

    std::string Notice(const std::string& command = "zet-client") const {
        return GeneratedNotice(Path("cfg/t.conf"), command);
    }
};

TEST_F(ProcessTemplateTest, TemplateBecomesItsTargetWithNoticeValuesAndReserve) {
    Write("target", "former\n", 0600);
    Write("templ/t.conf", kTemplateComment + "# for the editor ${realm}\n" + kCommentEnd +
                              "realm = ${realm}\n# ${realm}\nkdc=${kdc_server}");
    CZETConfig config(m_core);
    config.ProcessConfigFileTemplate("t.conf", Path("target"), "server", nullptr);
    EXPECT_EQ(Read("target"), Notice("zet-init") + "realm = EXAMPLE.ORG\n# ${realm}\nkdc=srv");
    EXPECT_EQ(Mode("target"), Mode("cfg/t.conf"));
    EXPECT_EQ(Read("target.before_zet"), "former\n");
    EXPECT_EQ(Names(), (Strings{"target", "target.before_zet"}));
}

TEST_F(ProcessTemplateTest, NewTargetIsRecordedAsAbsentBefore) {
    Write("cfg/t.conf", "x\n");
    CZETConfig(m_core).ProcessConfigFileTemplate("t.conf", Path("target"), "client", nullptr);
    EXPECT_EQ(Read("target"), Notice() + "x\n");
    EXPECT_EQ(Names(), (Strings{"target", "target.no_file_before_zet"}));
}

TEST_F(ProcessTemplateTest, ExtraValuesWinForThisRunOnly) {
    Write("cfg/t.conf", "${realm} ${mine} ${server}\n");
    CZETConfig config(m_core);
    StringMap extra = {{"${realm}", "OTHER"}, {"${mine}", "1"}};
    config.ProcessConfigFileTemplate("t.conf", Path("target"), "", &extra);
    EXPECT_EQ(Read("target"), Notice() + "OTHER 1 srv\n");
    EXPECT_EQ(config.TemplateValue("${realm}"), "EXAMPLE.ORG");
    EXPECT_FALSE(config.TemplateValueExists("${mine}"));
    EXPECT_EQ(extra, (StringMap{{"${realm}", "OTHER"}, {"${mine}", "1"}}));
}

TEST_F(ProcessTemplateTest, ValuesThatWereSetAreUsed) {
    Write("cfg/t.conf", "${mine}\n");
    CZETConfig config(m_core);
    config.SetTemplateValue("${mine}", "set");
    config.ProcessConfigFileTemplate("t.conf", Path("target"), "", nullptr);
    EXPECT_EQ(Read("target"), Notice() + "set\n");
}

TEST_F(ProcessTemplateTest, UnknownPlaceholdersAreAWarningAndStayVisible) {
    Write("cfg/t.conf", "${mine}\n");
    CZETConfig(m_core).ProcessConfigFileTemplate("t.conf", Path("target"), "", nullptr);
    EXPECT_EQ(Read("target"), Notice() + "!{mine}\n");
    EXPECT_EQ(Log().back(), "1 Template parameter '${mine}' not found.");
}

TEST_F(ProcessTemplateTest, EmptyTemplateNameIsRefusedByTheOpening) {
    CZETConfig config(m_core);
    ExpectError<EZETCheckError>("Argument is empty for 'OpenConfigFileTemplate'.",
                                [&] { config.ProcessConfigFileTemplate("", Path("target"), "", nullptr); });
}

TEST_F(ProcessTemplateTest, TemplateThatCannotBeOpenedIsOnlyLoggedByTheOpening) {
    CZETConfig config(m_core);
    m_core.Forget();
    config.ProcessConfigFileTemplate("t.conf", Path("target"), "", nullptr);
    EXPECT_EQ(Log(), (Strings{"0 Config file 'D/templ/t.conf' doesn't exist.",
                              "2 Process config file template 'D/cfg/t.conf' to 'D/target'...",
                              "0 Failed to open file 'D/cfg/t.conf'."}));
    EXPECT_EQ(Names(), Strings{});
}

TEST_F(ProcessTemplateTest, SecondRunReplacesTheTargetAndKeepsTheReserve) {
    Write("target", "former\n");
    Write("cfg/t.conf", "${realm}\n");
    CZETConfig config(m_core);
    for (const char* realm : {"A", "B"}) {
        m_core.SetParam("REALM", realm);
        config.RecreateTemplatesMap();
        config.ProcessConfigFileTemplate("t.conf", Path("target"), "", nullptr);
        EXPECT_EQ(Read("target"), Notice() + realm + "\n");
    }
    EXPECT_EQ(Read("target.before_zet"), "former\n");
}

TEST_F(ProcessTemplateTest, FailureOfTheSavePassesThrough) {
    Write("cfg/t.conf", "x\n");
    CZETConfig config(m_core);
    ExpectError<EZETError>("Failed to save file 'D/no/target.tmp'.", [&] {
        config.ProcessConfigFileTemplate("t.conf", Path("no/target"), "", nullptr);
    });
}

TEST_F(ProcessTemplateTest, TargetWhoseNameHoldsANulByteCostsNoOtherFile) {
    Write("cfg/t.conf", "x\n");
    const std::string precious = Write("precious", "precious\n", 0644);
    EXPECT_THROW(CZETConfig(m_core).ProcessConfigFileTemplate("t.conf", precious + std::string("\0y", 2),
                                                              "server", nullptr),
                 EZETError);
    EXPECT_EQ(Read("precious"), "precious\n");
    EXPECT_EQ(Mode("precious"), 0644U);
    EXPECT_EQ(Names(), Strings{"precious"});
}

TEST_F(ProcessTemplateTest, FailureOfTheLogPassesThroughAndLeavesTheTarget) {
    Write("target", "former\n");
    Write("cfg/t.conf", "${mine}\n");
    CZETConfig config(m_core);
    m_core.FailAt("Put", 2);
    ExpectScriptedFailure("Put",
                          [&] { config.ProcessConfigFileTemplate("t.conf", Path("target"), "", nullptr); });
    EXPECT_EQ(Names(), Strings{"target"});
    EXPECT_EQ(Read("target"), "former\n");
}

/// A manager whose own operations are replaced, and which notes them.
class NotingConfig : public CZETConfig {
  public:
    using CZETConfig::CZETConfig;

    std::shared_ptr<IZETConfigFile> OpenConfigFile(const std::string& fileName, const std::string& role,
                                                   bool noMarkers) override {
        calls.push_back("OpenConfigFile " + fileName + " '" + role + "'" + (noMarkers ? " bare" : " marked"));
        return opens ? std::make_shared<FakeFile>(calls) : nullptr;
    }
    std::shared_ptr<IZETConfigFile> OpenConfigFileTemplate(const std::string& templateName,
                                                           const std::string& fileName,
                                                           const std::string& role, bool noMarkers) override {
        calls.push_back("OpenConfigFileTemplate " + templateName + " " + fileName + " " + role +
                        (noMarkers ? " bare" : " marked"));
        return opens ? std::make_shared<FakeFile>(calls) : nullptr;
    }
    StringMap& TemplatesValues() override {
        calls.emplace_back("TemplatesValues");
        return values;
    }
    void RecreateTemplatesMap() override { calls.emplace_back("RecreateTemplatesMap"); }

    Strings calls;
    StringMap values = {{"${a}", "1"}, {"${b}", "2"}};
    bool opens = true;
};

TEST_F(ProcessTemplateTest, StepsGoThroughTheVirtualOperations) {
    NotingConfig config(m_core);
    m_core.Forget();
    StringMap extra = {{"${b}", "3"}, {"${c}", "4"}};
    config.ProcessConfigFileTemplate("t", "target", "server", &extra);
    EXPECT_EQ(config.calls, (Strings{"OpenConfigFileTemplate t target server marked", "TemplatesValues",
                                     "ApplyTemplates ${a}=1 ${b}=3 ${c}=4", "Save(false)", "released"}));
    EXPECT_EQ(config.values, (StringMap{{"${a}", "1"}, {"${b}", "2"}}));
    EXPECT_EQ(Journal(), Strings{});
}

TEST_F(ProcessTemplateTest, WithoutExtraValuesExactlyTheTemplateValuesAreApplied) {
    NotingConfig config(m_core);
    config.ProcessConfigFileTemplate("t", "target", "client", nullptr);
    EXPECT_EQ(config.calls.at(2), "ApplyTemplates ${a}=1 ${b}=2");
}

TEST_F(ProcessTemplateTest, EmptyPointerEndsItSilently) {
    NotingConfig config(m_core);
    config.opens = false;
    m_core.Forget();
    config.ProcessConfigFileTemplate("t", "target", "", nullptr);
    EXPECT_EQ(config.calls, Strings{"OpenConfigFileTemplate t target  marked"});
    EXPECT_EQ(Journal(), Strings{});
}

TEST_F(ProcessTemplateTest, MarkersAreRemovedThroughTheManagersOwnOpening) {
    NotingConfig config(m_core);
    m_core.Forget();
    config.RemoveZETMarkersFromConfigFile("/etc/x");
    EXPECT_EQ(config.calls,
              (Strings{"OpenConfigFile /etc/x '' marked", "RemoveZETMarkers", "Save(false)", "released"}));
    EXPECT_EQ(Journal(), Strings{});
}

TEST_F(ProcessTemplateTest, MarkersOfAFileThatCannotBeOpenedAreNotRemoved) {
    NotingConfig config(m_core);
    config.opens = false;
    config.RemoveZETMarkersFromConfigFile("/etc/x");
    EXPECT_EQ(config.calls, Strings{"OpenConfigFile /etc/x '' marked"});
}

/// Notes the two operations that the values of the manager are built with.
class NotingValues : public CZETConfig {
  public:
    using CZETConfig::CZETConfig;
    void RecreateTemplatesMap() override { ++rebuilds; }
    bool TemplateValueExists(const std::string& placeholder) override {
        asked.push_back(placeholder);
        return CZETConfig::TemplateValueExists(placeholder);
    }
    int rebuilds = 0;
    Strings asked;
};

TEST_F(ProcessTemplateTest, EmptyMapIsRebuiltThroughItsVirtualOperation) {
    NotingValues config(m_core);
    config.TemplatesValues();
    EXPECT_EQ(config.rebuilds, 0);
    config.TemplatesValues().clear();
    EXPECT_EQ(config.TemplatesValues(), StringMap{});
    EXPECT_EQ(config.rebuilds, 1);
}

TEST_F(ProcessTemplateTest, SettingAValueAsksForItThroughTheVirtualOperation) {
    NotingValues config(m_core);
    config.SetTemplateValue("${new}", "1");
    config.SetTemplateValue("${realm}", "2");
    EXPECT_EQ(config.asked, (Strings{"${new}", "${realm}"}));
    EXPECT_EQ(config.TemplatesValues().at("${new}"), "1");
    EXPECT_EQ(config.TemplatesValues().at("${realm}"), "2");
}

}  // namespace
}  // namespace ZET
