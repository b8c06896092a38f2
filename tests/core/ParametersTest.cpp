#include <algorithm>
#include <thread>

#include "Support.h"

namespace ZET::Test {
namespace {

using testing::HasSubstr;

class Parameters : public HostFixture {};

TEST_F(Parameters, ThreeOperationsFollowTheFile) {
    Start("DOMAIN=.example.org\nSERVER=dc1.example.org\nSERVICE_DISCOVERY=yes\n");
    EXPECT_EQ(Core().GetDomainName(), ".example.org");
    EXPECT_EQ(Core().GetServerName(), "dc1.example.org");
    EXPECT_TRUE(Core().IsServiceDiscovery());
}

TEST_F(Parameters, ThreeOperationsHaveDefaults) {
    Start("");
    EXPECT_EQ(Core().GetDomainName(), "");
    EXPECT_EQ(Core().GetServerName(), "");
    EXPECT_FALSE(Core().IsServiceDiscovery());
}

TEST_F(Parameters, WhatFeedsTheOperationsIsAlsoAParameter) {
    Start("DOMAIN=.example.org\nSERVER=dc1\nSERVICE_DISCOVERY=true\n");
    EXPECT_EQ(Core().GetParam("DOMAIN"), ".example.org");
    EXPECT_EQ(Core().GetParam("SERVER"), "dc1");
    EXPECT_EQ(Core().GetParam("SERVICE_DISCOVERY"), "true");
}

TEST_F(Parameters, EveryFlagWordIsUnderstood) {
    Start("");
    for (const char* word : {"yes", "true", "1"}) {
        Core().UpdateParam("SERVICE_DISCOVERY", word);
        EXPECT_TRUE(Core().IsServiceDiscovery()) << word;
    }
    for (const char* word : {"no", "false", "0"}) {
        Core().UpdateParam("SERVICE_DISCOVERY", "yes");
        Core().UpdateParam("SERVICE_DISCOVERY", word);
        EXPECT_FALSE(Core().IsServiceDiscovery()) << word;
    }
}

TEST_F(Parameters, FlagOfAValueIsToldWithoutAHost) {
    for (const char* word : {"yes", "true", "1"})
        EXPECT_EQ(FlagOfParam("SERVICE_DISCOVERY", word), true) << word;
    for (const char* word : {"no", "false", "0", "", "off"})
        EXPECT_EQ(FlagOfParam("SERVICE_DISCOVERY", word), false) << word;
    EXPECT_EQ(FlagOfParam("ZET_SYNC", "off"), true);
    EXPECT_EQ(FlagOfParam("REALM", "yes"), std::nullopt);
    EXPECT_EQ(FlagOfParam("SITE", "yes"), std::nullopt);
}

TEST_F(Parameters, DefaultsFitASmallDomain) {
    Start("DOMAIN=example.org\n");
    const std::pair<const char*, const char*> defaults[] = {
        {"REALM", "EXAMPLE.ORG"},
        {"DOMAIN_DN", "dc=example,dc=org"},
        {"TICKET_MAX_LIFE", "10h 0m 0s"},
        {"TICKET_MAX_RENEWABLE_LIFE", "7d 0h 0m 0s"},
        {"SERVER_ID", "1"},
        {"MINIMUM_UID", "10000"},
        {"SERVER_EXPORT_DIR", "/srv/zet"},
        {"ZET_CFG_DIR", "/etc/zet"},
        {"ZET_CFG_TEMPL_DIR", "/usr/share/zet/templates"},
        {"ZET_VAR_LIB_DIR", "/var/lib/zet"},
        {"NETWORK_FS_TYPE", "nfs4"},
        {"ZET_LANG", "C"},
        {"ZET_SYNC", "yes"},
        {"SERVICE_DISCOVERY", "no"},
    };
    for (const auto& [key, value] : defaults)
        EXPECT_EQ(Core().GetParam(key), value) << key;
}

TEST_F(Parameters, DefaultNamePatternsTellNamesFromOthers) {
    Start("");
    for (const char* key : {"VALID_USER_NAMES", "VALID_GROUP_NAMES"}) {
        const std::string pattern = Core().GetParam(key);
        EXPECT_TRUE(Core().MatchRegEx(pattern, "jane_doe-2", nullptr, 0));
        for (const char* name : {"", "2jane", "Jane", "jane doe", "../jane", "jane:0", "-jane"})
            EXPECT_FALSE(Core().MatchRegEx(pattern, name, nullptr, 0)) << name;
    }
}

TEST_F(Parameters, OneLeadingDotOfTheDomainIsNoPartOfTheRealm) {
    Start("DOMAIN=.Example.org\n");
    EXPECT_EQ(Core().GetParam("REALM"), "EXAMPLE.ORG");
    EXPECT_EQ(Core().GetParam("DOMAIN_DN"), "dc=Example,dc=org");
    Core().UpdateParam("DOMAIN", "..lab.net");
    EXPECT_EQ(Core().GetParam("REALM"), ".LAB.NET");
}

TEST_F(Parameters, DerivedDefaultsFollowTheDomain) {
    Start("DOMAIN=a.b\n");
    Core().UpdateParam("DOMAIN", "c.d.e");
    EXPECT_EQ(Core().GetDomainName(), "c.d.e");
    EXPECT_EQ(Core().GetParam("REALM"), "C.D.E");
    EXPECT_EQ(Core().GetParam("DOMAIN_DN"), "dc=c,dc=d,dc=e");
}

TEST_F(Parameters, DerivedDefaultsOfNoDomainAreEmpty) {
    Start("");
    EXPECT_EQ(LoggedBy([&] {
                  EXPECT_EQ(Core().GetParam("REALM"), "");
                  EXPECT_EQ(Core().GetParam("DOMAIN_DN"), "");
              }),
              "");
}

TEST_F(Parameters, FileWinsOverADerivedDefault) {
    Start("DOMAIN=a.b\nREALM=OTHER\n");
    Core().UpdateParam("DOMAIN", "c.d");
    EXPECT_EQ(Core().GetParam("REALM"), "OTHER");
}

TEST_F(Parameters, UpdateChangesTheServerAndNoFile) {
    Start("SERVER=one\n");
    Core().UpdateParam("SERVER", "two");
    EXPECT_EQ(Core().GetServerName(), "two");
    EXPECT_EQ(Core().GetParam("SERVER"), "two");
    EXPECT_EQ(ReadText(ConfigFile()), "SERVER=one\n");
    EXPECT_THAT(m_directory.Names(), testing::ElementsAre("zet.conf"));
}

TEST_F(Parameters, UnknownKeyIsEmptyAndWarnedOfOnce) {
    Start("");
    EXPECT_EQ(LoggedBy([&] { EXPECT_EQ(Core().GetParam("NO_SUCH_KEY"), ""); }),
              "zet: warning: Parameter 'NO_SUCH_KEY' is unknown.\n");
    EXPECT_EQ(LoggedBy([&] { EXPECT_EQ(Core().GetParam("NO_SUCH_KEY"), ""); }), "");
    EXPECT_EQ(LoggedBy([&] { EXPECT_EQ(Core().GetParam("zet_lang"), ""); }),
              "zet: warning: Parameter 'zet_lang' is unknown.\n");
}

TEST_F(Parameters, UnknownKeyIsWarnedOfOnceForAllHosts) {
    Start("");
    LoggedBy([&] { Core().GetParam("NO_SUCH_KEY_EITHER"); });
    Start("");
    EXPECT_EQ(LoggedBy([&] { Core().GetParam("NO_SUCH_KEY_EITHER"); }), "");
}

TEST_F(Parameters, KeyOfAModulesOwnIsLegal) {
    Start("MY_MODULE_KEY=mine\n");
    EXPECT_EQ(LoggedBy([&] { EXPECT_EQ(Core().GetParam("MY_MODULE_KEY"), "mine"); }), "");
    Core().UpdateParam("ANOTHER_KEY", "new");
    EXPECT_EQ(LoggedBy([&] { EXPECT_EQ(Core().GetParam("ANOTHER_KEY"), "new"); }), "");
}

TEST_F(Parameters, MainConfigurationFileIsThePathOfTheHost) {
    Start("");
    EXPECT_EQ(Core().GetParam("ZET_CFG"), ConfigFile());
}

TEST_F(Parameters, FileCannotNameAnotherMainConfigurationFile) {
    EXPECT_THAT(LoggedBy([&] { Start("\nZET_CFG=/elsewhere\n"); }),
                HasSubstr(ConfigFile() + ":2: ZET_CFG has no effect"));
    EXPECT_EQ(Core().GetParam("ZET_CFG"), ConfigFile());
}

TEST_F(Parameters, MainConfigurationFileCannotBeUpdated) {
    Start("");
    EXPECT_EQ(MessageOf<EZETCheckError>([&] { Core().UpdateParam("ZET_CFG", "/elsewhere"); }),
              "Parameter 'ZET_CFG' cannot be changed.");
    EXPECT_EQ(Core().GetParam("ZET_CFG"), ConfigFile());
    Core().UpdateParam("ZET_CFG", ConfigFile());
}

TEST_F(Parameters, UpdateRefusesWhatIsNoName) {
    Start("");
    EXPECT_EQ(MessageOf<EZETCheckError>([&] { Core().UpdateParam("", "v"); }),
              "Argument is empty for 'UpdateParam'.");
    for (const char* key : {"A=B", "#A", "A B", "1A", "A\nB", "A.B"})
        EXPECT_THAT(MessageOf<EZETCheckError>([&] { Core().UpdateParam(key, "v"); }),
                    HasSubstr("is no name"));
}

TEST_F(Parameters, UpdateRefusesAValueThatNoLineCanHold) {
    Start("A=old\n");
    for (const std::string& value : {std::string("a\nb"), std::string("a\0b", 3)})
        EXPECT_EQ(MessageOf<EZETCheckError>([&] { Core().UpdateParam("A", value); }),
                  "The value of parameter 'A' holds a line feed or a NUL byte.");
    EXPECT_EQ(Core().GetParam("A"), "old");
}

TEST_F(Parameters, FlagThatIsNoneCountsAsItsDefaultWithAWarning) {
    Start("SERVICE_DISCOVERY=yes\n");
    EXPECT_EQ(
        LoggedBy([&] { Core().UpdateParam("SERVICE_DISCOVERY", "perhaps"); }),
        "zet: warning: 'perhaps' is no value for SERVICE_DISCOVERY and counts as no (write yes or no)\n");
    EXPECT_FALSE(Core().IsServiceDiscovery());
    EXPECT_EQ(Core().GetParam("SERVICE_DISCOVERY"), "perhaps");
    EXPECT_EQ(LoggedBy([&] { Core().UpdateParam("SERVICE_DISCOVERY", "yes"); }), "");
    EXPECT_TRUE(Core().IsServiceDiscovery());
}

TEST_F(Parameters, HostStartsWithAFlagThatIsNoneAndNamesItsLine) {
    for (const std::string value : {"maybe", "", "yes\r", "YES"}) {
        EXPECT_THAT(LoggedBy([&] { Start("A=1\nZET_SYNC=" + value + "\n"); }),
                    HasSubstr(ConfigFile() + ":2: '" + value.substr(0, 3)));
        EXPECT_EQ(Core().GetParam("ZET_SYNC"), value);
    }
}

TEST_F(Parameters, WhatUpdateTakesEveryHostCanRead) {
    Start("");
    for (const char* key : {"ZET_SYNC", "SERVICE_DISCOVERY", "DOMAIN", "REALM", "MY_KEY", "_1"}) {
        for (const char* value : {"", " ", "maybe", "a=b", "# x", "x\r", "\xff", "\x1b[31m"}) {
            LoggedBy([&] {
                Core().UpdateParam(key, value);
                Start(std::string(key) + "=" + value + "\n");
            });
            EXPECT_EQ(Core().GetParam(key), value) << key;
        }
    }
}

TEST_F(Parameters, ProblemOfAParameterIsToldBeforeItIsSet) {
    EXPECT_EQ(ProblemTextOf("ZET_SYNC", "no"), "");
    EXPECT_EQ(ProblemTextOf("MY_KEY", "maybe"), "");
    EXPECT_EQ(ProblemTextOf("ZET_SYNC", "maybe"),
              "'maybe' is no value for ZET_SYNC and counts as yes (write yes or no)");
    EXPECT_EQ(ProblemTextOf("A\nB", ""),
              "'A\\nB' is no name of a parameter (use letters, digits and \"_\", no digit first)");
    for (const std::string& value : {std::string("a\nb"), std::string("a\0b", 3)})
        EXPECT_EQ(ProblemTextOf("A", value),
                  "the value of A holds a line feed or a NUL byte (give it without)");
}

TEST_F(Parameters, ValueOfAnotherKindIsHandedOutWithoutAWord) {
    EXPECT_EQ(LoggedBy([&] { Start("MINIMUM_UID=abc\nVALID_USER_NAMES=[\nZET_VAR_LIB_DIR=var\n"); }), "");
    EXPECT_EQ(LoggedBy([&] { Core().UpdateParam("TICKET_MAX_LIFE", "foo"); }), "");
    EXPECT_EQ(Core().GetParam("MINIMUM_UID"), "abc");
    EXPECT_EQ(Core().GetParam("VALID_USER_NAMES"), "[");
    EXPECT_EQ(Core().GetParam("ZET_VAR_LIB_DIR"), "var");
    EXPECT_EQ(Core().GetParam("TICKET_MAX_LIFE"), "foo");
}

TEST_F(Parameters, AllOfThemAreListed) {
    Start("MY_KEY=mine\nEMPTY=\nDOMAIN=a.b\n");
    Core().UpdateParam("LATER", "x");
    const StringMap params = m_host->GetParams();
    for (const char* key : {"MY_KEY", "EMPTY", "LATER", "DOMAIN", "REALM", "ZET_CFG", "ZET_SYNC"}) {
        ASSERT_EQ(params.count(key), 1U) << key;
        EXPECT_EQ(params.at(key), Core().GetParam(key)) << key;
    }
    EXPECT_EQ(params.count("COMMIT_TIME"), 0U);
}

TEST_F(Parameters, EveryLetterOfADomainIsRaised) {
    Start("DOMAIN=abcdefghijklmnopqrstuvwxyz.{`[@-09\n");
    EXPECT_EQ(Core().GetParam("REALM"), "ABCDEFGHIJKLMNOPQRSTUVWXYZ.{`[@-09");
}

TEST_F(Parameters, HostsInSeveralThreadsWarnOfAnUnknownKeyOnce) {
    const std::string log = LoggedBy([&] {
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; i++) {
            const std::string file = m_directory / std::to_string(i);
            WriteText(file, "");
            threads.emplace_back([file] {
                CZETHost host(file);
                for (int k = 0; k < 200; k++)
                    host.GetCore().GetParam("NO_SUCH_KEY_OF_A_THREAD_" + std::to_string(k));
            });
        }
        for (std::thread& thread : threads)
            thread.join();
    });
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 200);
}

}  // namespace
}  // namespace ZET::Test
