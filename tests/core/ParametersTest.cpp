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

TEST_F(Parameters, UpdateRefusesAFlagThatIsNone) {
    Start("SERVICE_DISCOVERY=yes\n");
    EXPECT_EQ(MessageOf<EZETCheckError>([&] { Core().UpdateParam("SERVICE_DISCOVERY", "perhaps"); }),
              "'perhaps' is no value for parameter 'SERVICE_DISCOVERY': yes or no is.");
    EXPECT_THAT(MessageOf<EZETCheckError>([&] { Core().UpdateParam("ZET_SYNC", ""); }),
                HasSubstr("is no value"));
    EXPECT_TRUE(Core().IsServiceDiscovery());
}

}  // namespace
}  // namespace ZET::Test
