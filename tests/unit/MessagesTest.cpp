#include <sys/stat.h>

#include <cerrno>

#include "ModuleTest.h"
#include "SystemCalls.h"
#include "ZETConfig.h"

namespace ZET {
namespace {

/// A core that chooses the catalogue when a text is asked for may rely on the order of its calls.
class MessageOrderTest : public ModuleTest {};

TEST_F(MessageOrderTest, FormatterIsBuiltForATextThatIsTranslated) {
    CZETConfigFile file(m_core);
    EXPECT_FALSE(file.Open(Path("missing"), "", false));
    ExpectError<EZETCheckError>("Argument is empty for 'SetLine'.", [&] { file.SetLine("", "x"); });
    CZETConfig config(m_core);
    config.TemplateValue("${no}");
    ASSERT_EQ(m_core.Messages().size(), 4U);
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(m_core.Messages()[i].translationsBefore, i + 1);
}

/// Where a message cannot be formatted, the empty text stands for it, and nothing else changes.
class UnformattedMessageTest : public ModuleTest {
  protected:
    UnformattedMessageTest() { m_core.RefuseToFormat(); }

    void Open(const std::string& text) {
        ASSERT_TRUE(m_file.Open(Write("a.conf", text), "", true));
        m_core.Forget();
    }

    CZETConfigFile m_file{m_core};
};

TEST_F(UnformattedMessageTest, NoticesAndFailuresOfOpeningAreLoggedEmpty) {
    EXPECT_FALSE(m_file.Open(Path("missing"), "", false));
    EXPECT_EQ(Log(), (Strings{"2 ", "0 "}));
    Write("cfg/t", "x\n");
    EXPECT_TRUE(CZETConfigFile(m_core).OpenTemplate("t", Path("target"), "", false));
    EXPECT_EQ(Log().back(), "2 ");
}

TEST_F(UnformattedMessageTest, WarningsAreLoggedEmptyAndTheTextIsTheSame) {
    Open("${no}\n(\n(\n)\n" + kEnd + "x\n");
    StringMap none;
    m_file.ApplyTemplates(none);
    m_file.RemoveMarkers("(", ")");
    m_file.SetLine("^x", "y");
    m_file.RestoreLine("^x");
    EXPECT_EQ(Log(), (Strings{"1 ", "1 ", "1 ", "1 "}));
    m_file.Save(true);
    EXPECT_EQ(Read("a.conf"), "!{no}\n" + kEnd + "y\n");
}

TEST_F(UnformattedMessageTest, RefusedArgumentsAreThrownEmpty) {
    CZETConfigFile unopened(m_core);
    ExpectError<EZETCheckError>("", [&] { unopened.Open("", "", false); });
    ExpectError<EZETCheckError>("", [&] { unopened.OpenTemplate("t", "", "", false); });
    ExpectError<EZETCheckError>("", [&] { unopened.RemoveMarkers("(", ")"); });
    Open("x\n");
    ExpectError<EZETCheckError>("", [&] { m_file.InsertHeader(""); });
    ExpectError<EZETCheckError>("", [&] { m_file.SetLine("", ""); });
    ExpectError<EZETCheckError>("", [&] { m_file.GetLine(""); });
    ExpectError<EZETCheckError>("", [&] { m_file.RestoreLine(""); });
    ExpectError<EZETCheckError>("", [&] { m_file.SetParamValue("", ""); });
    ExpectError<EZETCheckError>("", [&] { m_file.GetParamValue(""); });
    ExpectError<EZETCheckError>("", [&] { m_file.RestoreParamValue(""); });
}

TEST_F(UnformattedMessageTest, FailedFileOperationsAreThrownEmpty) {
    LeavesTemporary();
    const std::string path = Write("a.conf", "x\n");
    {
        const SystemCalls lies({.statError = EIO});
        ExpectError<EZETError>("", [&] { CZETConfigFile(m_core).Open(path, "", true); });
    }
    Open("x\n");
    {
        const SystemCalls lies({.statError = EIO, .statFailsOnlyAfterWrite = true});
        ExpectError<EZETError>("", [&] { m_file.Save(true); });
    }
    ASSERT_EQ(::remove(Path("a.conf.tmp").c_str()), 0);
    ASSERT_EQ(::mkdir(Path("a.conf.tmp").c_str(), 0755), 0);
    ExpectError<EZETError>("", [&] { m_file.Save(true); });
}

TEST_F(UnformattedMessageTest, ManagersMessagesAreEmpty) {
    CZETConfig config(m_core);
    EXPECT_EQ(config.TemplateValue("none"), "");
    config.InstallConfigFileTemplate("none");
    EXPECT_EQ(Log(), (Strings{"0 ", "0 "}));
    ExpectError<EZETCheckError>("", [&] { config.OpenConfigFileTemplate("", "t", "", false); });
    ExpectError<EZETCheckError>("", [&] { config.ConfigStatusName(""); });
    ExpectError<EZETInternalError>("", [&] { config.ConfigStatusName("x"); });
    StringMap values;
    ExpectError<EZETError>("", [&] { config.LoadConfigStatus("server", values); });
    m_core.SetParam("ZET_VAR_LIB_DIR", Path("missing"));
    ExpectError<EZETError>("", [&] { config.SaveConfigStatus("server"); });
    ExpectError<EZETError>("", [&] { config.SaveFileServerStatus(); });
}

/// Every text that is formatted goes through the message catalogue first.
class TranslatedMessageTest : public ModuleTest {
  protected:
    TranslatedMessageTest() {
        for (const char* text :
             {"Argument is empty for '%s'.", "Failed to open file '%s'.", "Failed to save file '%s'.",
              "Error stat '%s':%m", "Invalid config object '%s'.", "Template parameter '%s' not found.",
              "Config file '%s' doesn't exist.", "Invalid mode '%s'.", "Process config file '%s'..."})
            m_core.SetTranslation(text, "T " + std::string(text));
        m_core.SetTranslation("Unexpected token '%s' in line %d.", "%2$d: %1$s");
    }
};

TEST_F(TranslatedMessageTest, ThrownMessagesAreTranslated) {
    LeavesTemporary();
    CZETConfig config(m_core);
    CZETConfigFile file(m_core);
    ExpectError<EZETCheckError>("T Argument is empty for 'GetLine'.", [&] { file.GetLine(""); });
    ExpectError<EZETCheckError>("T Invalid config object ''.", [&] { file.RemoveMarkers("(", ")"); });
    ExpectError<EZETInternalError>("T Invalid mode 'x'.", [&] { config.ConfigStatusName("x"); });
    StringMap values;
    ExpectError<EZETError>("T Failed to open file 'D/var/zet-server.status'.",
                           [&] { config.LoadConfigStatus("server", values); });
    const std::string path = Write("a.conf", "x\n");
    EXPECT_TRUE(file.Open(path, "", true));
    ASSERT_EQ(::mkdir(Path("a.conf.tmp").c_str(), 0755), 0);
    ExpectError<EZETError>("T Failed to save file 'D/a.conf.tmp'.", [&] { file.Save(true); });
}

TEST_F(TranslatedMessageTest, StatusFailureKeepsTheSystemsReasonThroughTheTranslation) {
    const std::string path = Write("a.conf", "x\n");
    CZETConfigFile file(m_core);
    const SystemCalls lies({.statError = ENAMETOOLONG});
    ExpectError<EZETError>("T Error stat 'D/a.conf':File name too long", [&] { file.Open(path, "", true); });
}

TEST_F(TranslatedMessageTest, LoggedMessagesAreTranslated) {
    CZETConfig config(m_core);
    config.TemplateValue("none");
    config.InstallConfigFileTemplate("none");
    EXPECT_EQ(Log(), (Strings{"0 T Template parameter 'none' not found.",
                              "0 T Config file 'D/templ/none' doesn't exist."}));
    m_core.Forget();
    config.OpenConfigFile(Path("missing"), "", false);
    EXPECT_EQ(Log(),
              (Strings{"2 T Process config file 'D/missing'...", "0 T Failed to open file 'D/missing'."}));
}

TEST_F(TranslatedMessageTest, TranslationMayTurnTheArgumentsRound) {
    CZETConfigFile file(m_core);
    ASSERT_TRUE(file.Open(Write("a.conf", "(\n(\n"), "", true));
    file.RemoveMarkers("(", ")");
    EXPECT_EQ(Log().back(), "1 2: (");
}

TEST_F(TranslatedMessageTest, MarkersAndFileNamesAreNotTranslated) {
    CZETConfigFile file(m_core);
    ASSERT_TRUE(file.Open(Write("a.conf", "x\n"), "", false));
    m_core.Forget();
    file.SetLine("^x", "y");
    file.RemoveZETMarkers();
    EXPECT_EQ(Journal({"Translate"}), Strings{});
}

}  // namespace
}  // namespace ZET
