#include <sys/stat.h>
#include <unistd.h>

#include <ostream>

#include "ModuleTest.h"
#include "ZETConfig.h"

namespace ZET {
namespace {

class ConfigStatusTest : public ModuleTest {
  protected:
    ConfigStatusTest() { m_core.Forget(); }

    StringMap Loaded(const std::string& content) {
        Write("var/zet-server.status", content);
        StringMap values;
        m_config.LoadConfigStatus("server", values);
        return values;
    }

    void ExpectOpenFailure(const std::string& function, const std::function<void()>& act) {
        m_core.Forget();
        ExpectError<EZETError>("Failed to open file 'D/var/zet-server.status'.", act);
        EXPECT_EQ(Messages(), Strings{"libzet-core src/interfaces/zet-config/ZETConfig " + function +
                                      " 1: Failed to open file 'D/var/zet-server.status'."});
    }

    CZETConfig m_config{m_core};
};

TEST_F(ConfigStatusTest, NameIsDirectoryAndNameOfTheMode) {
    EXPECT_EQ(Shown(m_config.ConfigStatusName("server")), "D/var/zet-server.status");
    EXPECT_EQ(Shown(m_config.ConfigStatusName("client")), "D/var/zet-client.status");
}

TEST_F(ConfigStatusTest, DirectoryIsAskedForEachTimeAndTakenAsItStands) {
    m_core.SetParam("ZET_VAR_LIB_DIR", "/a/");
    EXPECT_EQ(m_config.ConfigStatusName("server"), "/a//zet-server.status");
    m_core.SetParam("ZET_VAR_LIB_DIR", "");
    EXPECT_EQ(m_config.ConfigStatusName("client"), "/zet-client.status");
    EXPECT_EQ(Journal(), (Strings{"GetParam ZET_VAR_LIB_DIR", "GetParam ZET_VAR_LIB_DIR"}));
}

TEST_F(ConfigStatusTest, EmptyModeIsRefusedBeforeTheCoreIsAsked) {
    ExpectError<EZETCheckError>("Argument is empty for 'ConfigStatusName'.",
                                [&] { m_config.ConfigStatusName(""); });
    EXPECT_EQ(Messages(), Strings{"libzet-core src/interfaces/zet-config/ZETConfig ConfigStatusName 1: "
                                  "Argument is empty for 'ConfigStatusName'."});
    EXPECT_EQ(Journal({"GetParam"}), Strings{});
}

TEST_F(ConfigStatusTest, UnknownModeIsAnInnerContradictionThatSaysWhere) {
    try {
        m_config.ConfigStatusName("router");
        FAIL() << "nothing thrown";
    } catch (const EZETInternalError& error) {
        EXPECT_EQ(error.GetMessage(), "Invalid mode 'router'.");
        EXPECT_EQ(error.GetDetail(), "");
        EXPECT_EQ(error.GetSource(), "src/interfaces/zet-config/ZETConfig");
        EXPECT_EQ(error.GetFunction(), "ConfigStatusName");
        EXPECT_EQ(error.GetLine(), m_core.Messages().at(0).line);
        EXPECT_GT(error.GetLine(), 0U);
    }
    EXPECT_EQ(Messages(), Strings{"libzet-config src/interfaces/zet-config/ZETConfig ConfigStatusName 1: "
                                  "Invalid mode 'router'."});
    EXPECT_EQ(Journal().front(), "GetParam ZET_VAR_LIB_DIR");
}

TEST_F(ConfigStatusTest, ModesAreComparedByteForByte) {
    for (const char* mode : {"Server", "SERVER", "server ", " client", "Client", "s"})
        ExpectError<EZETInternalError>(std::string("Invalid mode '") + mode + "'.",
                                       [&] { m_config.ConfigStatusName(mode); });
}

TEST_F(ConfigStatusTest, EveryOperationRefusesBadModes) {
    StringMap values;
    const std::vector<std::function<void(const std::string&)>> operations = {
        [&](const std::string& mode) { m_config.SaveConfigStatus(mode); },
        [&](const std::string& mode) { m_config.IsConfigStatusExist(mode); },
        [&](const std::string& mode) { m_config.RemoveConfigStatus(mode); },
        [&](const std::string& mode) { m_config.LoadConfigStatus(mode, values); }};
    for (const auto& operation : operations) {
        ExpectError<EZETCheckError>("Argument is empty for 'ConfigStatusName'.", [&] { operation(""); });
        ExpectError<EZETInternalError>("Invalid mode 'x'.", [&] { operation("x"); });
    }
}

TEST_F(ConfigStatusTest, CoreWritesTheStatusAlone) {
    m_core.SetStatusWriter([](std::ostream& stream) { stream << "a=1\nb"; });
    m_config.SaveConfigStatus("server");
    EXPECT_EQ(Read("var/zet-server.status"), "a=1\nb");
    EXPECT_EQ(Journal(), (Strings{"GetParam ZET_VAR_LIB_DIR", "WriteStatus"}));
    m_config.SaveConfigStatus("client");
    EXPECT_TRUE(Exists("var/zet-client.status"));
}

TEST_F(ConfigStatusTest, StatusOfNothingIsAnEmptyFile) {
    m_config.SaveConfigStatus("server");
    EXPECT_EQ(Read("var/zet-server.status"), "");
}

TEST_F(ConfigStatusTest, FormerStatusIsEmptiedBeforeTheCoreWrites) {
    Write("var/zet-server.status", "a much longer former status\n", 0640);
    m_core.SetStatusWriter([&](std::ostream& stream) {
        EXPECT_TRUE(stream.good());
        EXPECT_EQ(Read("var/zet-server.status"), "");
        stream << "a=1\n";
    });
    m_config.SaveConfigStatus("server");
    EXPECT_EQ(Read("var/zet-server.status"), "a=1\n");
    EXPECT_EQ(Mode("var/zet-server.status"), 0640U);
}

TEST_F(ConfigStatusTest, NewStatusHasTheModeOfTheCreationMask) {
    const mode_t before = ::umask(027);
    m_config.SaveConfigStatus("server");
    EXPECT_EQ(::umask(before), 027U);
    EXPECT_EQ(Mode("var/zet-server.status"), 0640U);
}

TEST_F(ConfigStatusTest, StatusThatCannotBeOpenedForWritingIsAnError) {
    m_core.SetParam("ZET_VAR_LIB_DIR", Path("missing"));
    ExpectError<EZETError>("Failed to open file 'D/missing/zet-client.status'.",
                           [&] { m_config.SaveConfigStatus("client"); });
    EXPECT_EQ(Journal({"WriteStatus"}), Strings{});
}

TEST_F(ConfigStatusTest, DirectoryCannotBeOpenedForWriting) {
    ASSERT_EQ(::mkdir(Path("var/zet-server.status").c_str(), 0755), 0);
    ExpectOpenFailure("SaveConfigStatus", [&] { m_config.SaveConfigStatus("server"); });
}

TEST_F(ConfigStatusTest, FailureOfTheCoresWriterPassesThroughAndLeavesTheFileCut) {
    Write("var/zet-server.status", "former\n");
    m_core.FailAt("WriteStatus");
    ExpectScriptedFailure("WriteStatus", [&] { m_config.SaveConfigStatus("server"); });
    EXPECT_EQ(Read("var/zet-server.status"), "");
}

TEST_F(ConfigStatusTest, SevenLinesGiveThreeEntries) {
    EXPECT_EQ(Loaded("a=1\n# b=2\n\nc\n=x\nd==5\na=7\n"), (StringMap{{"", "x"}, {"a", "7"}, {"d", "=5"}}));
}

TEST_F(ConfigStatusTest, LastLineWithoutLineFeedIsAnEntry) {
    EXPECT_EQ(Loaded("a=1\nk=v"), (StringMap{{"a", "1"}, {"k", "v"}}));
}

TEST_F(ConfigStatusTest, NothingIsTrimmed) {
    EXPECT_EQ(Loaded("key = value\n"), (StringMap{{"key ", " value"}}));
    EXPECT_EQ(Loaded("\ta=1\t\r\n"), (StringMap{{"\ta", "1\t\r"}}));
    EXPECT_EQ(Loaded("a=\"1\" # no comment\n"), (StringMap{{"a", "\"1\" # no comment"}}));
}

TEST_F(ConfigStatusTest, OnlyTheFirstByteMakesAComment) {
    EXPECT_EQ(Loaded(" # a=1\n#b=2\n"), (StringMap{{" # a", "1"}}));
}

TEST_F(ConfigStatusTest, LinesWithoutEqualsSignAreSkippedSilently) {
    m_core.Forget();
    EXPECT_EQ(Loaded("\n\r\n \na\n#\n"), StringMap{});
    EXPECT_EQ(Journal(), Strings{"GetParam ZET_VAR_LIB_DIR"});
}

TEST_F(ConfigStatusTest, EmptyKeysAndValuesAreEntries) {
    EXPECT_EQ(Loaded("a=\n=\n"), (StringMap{{"", ""}, {"a", ""}}));
}

TEST_F(ConfigStatusTest, NullBytesBelongToKeysAndValues) {
    EXPECT_EQ(Loaded(std::string("a\0=\0b\n", 6)),
              (StringMap{{std::string("a\0", 2), std::string("\0b", 2)}}));
}

TEST_F(ConfigStatusTest, EmptyStatusHasNoEntries) {
    EXPECT_EQ(Loaded(""), StringMap{});
}

TEST_F(ConfigStatusTest, LoadingReplacesWhatTheMapHeld) {
    Write("var/zet-client.status", "a=1\n");
    StringMap values = {{"old", "x"}, {"a", "0"}};
    m_config.LoadConfigStatus("client", values);
    EXPECT_EQ(values, (StringMap{{"a", "1"}}));
}

TEST_F(ConfigStatusTest, MissingStatusIsAnErrorAndEmptiesTheMap) {
    StringMap values = {{"old", "x"}};
    ExpectOpenFailure("LoadConfigStatus", [&] { m_config.LoadConfigStatus("server", values); });
    EXPECT_EQ(values, StringMap{});
}

TEST_F(ConfigStatusTest, BadModeEmptiesTheMapToo) {
    for (const char* mode : {"", "x"}) {
        StringMap values = {{"old", "x"}};
        EXPECT_THROW(m_config.LoadConfigStatus(mode, values), EZETError);
        EXPECT_EQ(values, StringMap{});
    }
}

TEST_F(ConfigStatusTest, DirectoryCannotBeLoaded) {
    ASSERT_EQ(::mkdir(Path("var/zet-server.status").c_str(), 0755), 0);
    StringMap values = {{"old", "x"}};
    ExpectOpenFailure("LoadConfigStatus", [&] { m_config.LoadConfigStatus("server", values); });
    EXPECT_EQ(values, StringMap{});
}

TEST_F(ConfigStatusTest, StatusThatCannotBeReadIsAnErrorAndNoShorterStatus) {
    ASSERT_EQ(::symlink("/proc/self/mem", Path("var/zet-server.status").c_str()), 0);
    StringMap values;
    ExpectOpenFailure("LoadConfigStatus", [&] { m_config.LoadConfigStatus("server", values); });
}

TEST_F(ConfigStatusTest, ExistenceAndRemovalGoThroughTheCore) {
    EXPECT_FALSE(m_config.IsConfigStatusExist("server"));
    m_config.RemoveConfigStatus("server");
    EXPECT_EQ(Journal(), (Strings{"GetParam ZET_VAR_LIB_DIR", "IsFileExist D/var/zet-server.status",
                                  "GetParam ZET_VAR_LIB_DIR", "IsFileExist D/var/zet-server.status"}));
    Write("var/zet-server.status", "a=1\n");
    EXPECT_TRUE(m_config.IsConfigStatusExist("server"));
    EXPECT_FALSE(m_config.IsConfigStatusExist("client"));
    m_config.RemoveConfigStatus("server");
    EXPECT_EQ(Journal().back(), "RemoveFile D/var/zet-server.status");
    EXPECT_FALSE(m_config.IsConfigStatusExist("server"));
}

TEST_F(ConfigStatusTest, FailuresOfTheHelpersPassThrough) {
    Write("var/zet-server.status", "a=1\n");
    m_core.FailAt("RemoveFile");
    ExpectScriptedFailure("RemoveFile", [&] { m_config.RemoveConfigStatus("server"); });
    m_core.FailAt("IsFileExist");
    ExpectScriptedFailure("IsFileExist", [&] { m_config.IsConfigStatusExist("server"); });
    m_core.FailAt("GetParam");
    ExpectScriptedFailure("GetParam", [&] { m_config.SaveConfigStatus("server"); });
}

}  // namespace
}  // namespace ZET
