#include "ModuleTest.h"
#include "ZETConfig.h"

namespace ZET {
namespace {

/// A core of which every answer can be told from the others.
class TemplateValuesTest : public ModuleTest {
  protected:
    TemplateValuesTest() {
        for (const char* key : {"REALM", "TICKET_MAX_RENEWABLE_LIFE", "TICKET_MAX_LIFE", "SERVER_ID",
                                "MINIMUM_UID", "SERVER_EXPORT_DIR", "VALID_USER_NAMES", "VALID_GROUP_NAMES"})
            m_core.SetParam(key, std::string("value of ") + key);
        m_core.SetParam("DOMAIN_DN", "dc=example,dc=org");
        m_core.SetDomainName("example.org");
        m_core.SetServerName("srv.example.org");
    }

    std::string ValueFor(const std::string& placeholder) {
        return CZETConfig(m_core).TemplateValue(placeholder);
    }

    std::string DirectoryComponentOf(const std::string& domainName) {
        m_core.SetParam("DOMAIN_DN", domainName);
        return ValueFor("${ldap_dc}");
    }
};

const Strings kPlaceholders = {
    "${realm}",     "${max_renewable_life}", "${max_life}",         "${server}",
    "${server_id}", "${minimum_uid}",        "${ldap_domain}",      "${ldap_dc}",
    "${domain}",    "${server_export_dir}",  "${valid_user_names}", "${valid_group_names}",
    "${ldap_uris}", "${kdc_server}",         "${kadmin_server}"};

TEST_F(TemplateValuesTest, MapHoldsExactlyTheFifteenBuiltInValues) {
    CZETConfig config(m_core);
    const StringMap expected = {{"${realm}", "value of REALM"},
                                {"${max_renewable_life}", "value of TICKET_MAX_RENEWABLE_LIFE"},
                                {"${max_life}", "value of TICKET_MAX_LIFE"},
                                {"${server}", "srv.example.org"},
                                {"${server_id}", "value of SERVER_ID"},
                                {"${minimum_uid}", "value of MINIMUM_UID"},
                                {"${ldap_domain}", "dc=example,dc=org"},
                                {"${ldap_dc}", "example"},
                                {"${domain}", "example.org"},
                                {"${server_export_dir}", "value of SERVER_EXPORT_DIR"},
                                {"${valid_user_names}", "value of VALID_USER_NAMES"},
                                {"${valid_group_names}", "value of VALID_GROUP_NAMES"},
                                {"${ldap_uris}", "ldap://srv.example.org"},
                                {"${kdc_server}", "srv.example.org"},
                                {"${kadmin_server}", "srv.example.org"}};
    EXPECT_EQ(config.TemplatesValues(), expected);
}

TEST_F(TemplateValuesTest, ServiceDiscoveryNamesTheServicesInsteadOfTheServer) {
    m_core.SetServiceDiscovery(true);
    CZETConfig config(m_core);
    EXPECT_EQ(config.TemplateValue("${ldap_uris}"), "ldap://_ldap_tcp ");
    EXPECT_EQ(config.TemplateValue("${ldap_uris}").size(), 17U);
    EXPECT_EQ(config.TemplateValue("${kdc_server}"), "_kerberos_tcp");
    EXPECT_EQ(config.TemplateValue("${kadmin_server}"), "_kadmin_tcp");
    EXPECT_EQ(config.TemplateValue("${server}"), "srv.example.org");
}

TEST_F(TemplateValuesTest, ConstructorAsksTheCoreInTheOrderOfTheTable) {
    const CZETConfig config(m_core);
    EXPECT_EQ(Journal(),
              (Strings{"GetParam REALM", "GetParam TICKET_MAX_RENEWABLE_LIFE", "GetParam TICKET_MAX_LIFE",
                       "GetServerName", "GetParam SERVER_ID", "GetParam MINIMUM_UID", "GetParam DOMAIN_DN",
                       "GetDomainName", "GetParam SERVER_EXPORT_DIR", "GetParam VALID_USER_NAMES",
                       "GetParam VALID_GROUP_NAMES", "IsServiceDiscovery", "GetServerName", "GetServerName",
                       "GetServerName"}));
}

TEST_F(TemplateValuesTest, ServiceDiscoveryAsksForTheServerOnce) {
    m_core.SetServiceDiscovery(true);
    const CZETConfig config(m_core);
    EXPECT_EQ(Journal({"GetServerName"}).size(), 1U);
    EXPECT_EQ(Journal({"IsServiceDiscovery"}).size(), 1U);
}

TEST_F(TemplateValuesTest, DirectoryComponentIsTheFirstOneWithoutItsPrefix) {
    EXPECT_EQ(DirectoryComponentOf("dc=example,dc=org"), "example");
    EXPECT_EQ(DirectoryComponentOf("dc=a,dc=b,dc=c"), "a");
    EXPECT_EQ(DirectoryComponentOf("dc=lab"), "lab");
}

TEST_F(TemplateValuesTest, DirectoryComponentLosesThreeCharactersWhateverTheyAre) {
    EXPECT_EQ(DirectoryComponentOf("o=x,dc=y"), "");
    EXPECT_EQ(DirectoryComponentOf("abcdef"), "def");
    EXPECT_EQ(DirectoryComponentOf("ou"), "");
    EXPECT_EQ(DirectoryComponentOf("abc"), "");
    EXPECT_EQ(DirectoryComponentOf(""), "");
    EXPECT_EQ(DirectoryComponentOf(",,,x,y"), "x");
}

TEST_F(TemplateValuesTest, WholeDomainNameIsKeptAsLdapDomain) {
    m_core.SetParam("DOMAIN_DN", "dc=a,dc=b,dc=c");
    EXPECT_EQ(ValueFor("${ldap_domain}"), "dc=a,dc=b,dc=c");
}

TEST_F(TemplateValuesTest, DomainLosesOneLeadingDot) {
    for (const auto& [name, value] : StringMap{
             {".lab.net", "lab.net"}, {"..lab.net", ".lab.net"}, {"lab.", "lab."}, {".", ""}, {"", ""}}) {
        m_core.SetDomainName(name);
        EXPECT_EQ(ValueFor("${domain}"), value) << name;
    }
}

TEST_F(TemplateValuesTest, ValuesAreTakenAsTheCoreReturnsThem) {
    m_core.SetParam("REALM", " Ex\tample \n");
    m_core.SetParam("SERVER_ID", "");
    CZETConfig config(m_core);
    EXPECT_EQ(config.TemplateValue("${realm}"), " Ex\tample \n");
    EXPECT_TRUE(config.TemplateValueExists("${server_id}"));
    EXPECT_EQ(config.TemplateValue("${server_id}"), "");
    EXPECT_EQ(Log(), Strings{});
}

TEST_F(TemplateValuesTest, ValuesChangeOnlyWhenTheyAreBuiltAnew) {
    CZETConfig config(m_core);
    m_core.SetParam("REALM", "NEW");
    EXPECT_EQ(config.TemplateValue("${realm}"), "value of REALM");
    config.RecreateTemplatesMap();
    EXPECT_EQ(config.TemplateValue("${realm}"), "NEW");
}

TEST_F(TemplateValuesTest, ValueThatWasSetLastsUntilTheNextRebuild) {
    CZETConfig config(m_core);
    config.SetTemplateValue("${mine}", "1");
    config.SetTemplateValue("${realm}", "OTHER");
    EXPECT_TRUE(config.TemplateValueExists("${mine}"));
    EXPECT_EQ(config.TemplateValue("${mine}"), "1");
    EXPECT_EQ(config.TemplateValue("${realm}"), "OTHER");
    EXPECT_EQ(config.TemplatesValues().size(), 16U);
    config.RecreateTemplatesMap();
    EXPECT_FALSE(config.TemplateValueExists("${mine}"));
    EXPECT_EQ(config.TemplateValue("${realm}"), "value of REALM");
    EXPECT_EQ(config.TemplatesValues().size(), 15U);
}

TEST_F(TemplateValuesTest, SettingAValueSaysAndAsksNothing) {
    CZETConfig config(m_core);
    m_core.Forget();
    config.SetTemplateValue("${mine}", "1");
    config.SetTemplateValue("${mine}", "2");
    EXPECT_EQ(config.TemplatesValues().at("${mine}"), "2");
    EXPECT_EQ(Journal(), Strings{});
}

TEST_F(TemplateValuesTest, UnknownPlaceholderIsLoggedAsAnErrorAndEmpty) {
    CZETConfig config(m_core);
    m_core.Forget();
    EXPECT_EQ(config.TemplateValue("realm"), "");
    EXPECT_EQ(Journal(), (Strings{"Translate libzet-config: Template parameter '%s' not found.",
                                  "Format TemplateValue: Template parameter 'realm' not found.",
                                  "Put 0 Template parameter 'realm' not found."}));
    EXPECT_EQ(Messages(), Strings{"libzet-config src/interfaces/zet-config/ZETConfig TemplateValue 1: "
                                  "Template parameter 'realm' not found."});
    EXPECT_EQ(m_core.Messages().at(0).line, 184U);
}

TEST_F(TemplateValuesTest, PlaceholdersAreComparedByteForByte) {
    CZETConfig config(m_core);
    EXPECT_FALSE(config.TemplateValueExists("${REALM}"));
    EXPECT_FALSE(config.TemplateValueExists("${realm} "));
    EXPECT_FALSE(config.TemplateValueExists(""));
    EXPECT_TRUE(config.TemplateValueExists("${realm}"));
    EXPECT_EQ(Log(), Strings{});
}

TEST_F(TemplateValuesTest, EmptyMapIsRebuiltOnlyWhenItIsAskedForAsAWhole) {
    CZETConfig config(m_core);
    config.TemplatesValues().clear();
    m_core.Forget();
    EXPECT_EQ(config.TemplateValue("${realm}"), "");
    EXPECT_FALSE(config.TemplateValueExists("${realm}"));
    EXPECT_EQ(Journal({"GetParam"}), Strings{});
    EXPECT_EQ(config.TemplatesValues().size(), 15U);
    EXPECT_EQ(Journal({"GetParam"}).size(), 9U);
}

TEST_F(TemplateValuesTest, MapIsHandedOutItself) {
    CZETConfig config(m_core);
    config.TemplatesValues()["${mine}"] = "1";
    EXPECT_EQ(&config.TemplatesValues(), &config.TemplatesValues());
    EXPECT_TRUE(config.TemplateValueExists("${mine}"));
}

TEST_F(TemplateValuesTest, MapThatIsNotEmptyIsNotRebuilt) {
    CZETConfig config(m_core);
    config.TemplatesValues().clear();
    config.SetTemplateValue("${mine}", "1");
    m_core.Forget();
    EXPECT_EQ(config.TemplatesValues(), (StringMap{{"${mine}", "1"}}));
    EXPECT_EQ(Journal(), Strings{});
}

TEST_F(TemplateValuesTest, FailureInTheConstructorPassesThrough) {
    m_core.FailAt("GetParam MINIMUM_UID");
    ExpectScriptedFailure("GetParam MINIMUM_UID", [&] { CZETConfig{m_core}; });
}

/// A call of the core that fails, and how many rows of the table are filled by then.
struct FailingCall {
    const char* name;
    const char* call;
    std::size_t nth;
    std::size_t rows;
};

void PrintTo(const FailingCall& each, std::ostream* stream) {
    *stream << each.name;
}

class PartlyFilledMapTest : public TemplateValuesTest, public testing::WithParamInterface<FailingCall> {};

TEST_P(PartlyFilledMapTest, HoldsTheRowsBeforeTheFailure) {
    CZETConfig config(m_core);
    config.SetTemplateValue("${mine}", "1");
    m_core.FailAt(GetParam().call, GetParam().nth);
    ExpectScriptedFailure(GetParam().call, [&] { config.RecreateTemplatesMap(); });
    Strings present;
    for (const std::string& placeholder : kPlaceholders)
        if (config.TemplateValueExists(placeholder)) present.push_back(placeholder);
    const auto rows = kPlaceholders.begin() + static_cast<std::ptrdiff_t>(GetParam().rows);
    EXPECT_EQ(present, Strings(kPlaceholders.begin(), rows));
    EXPECT_FALSE(config.TemplateValueExists("${mine}"));
}

INSTANTIATE_TEST_SUITE_P(EachCall, PartlyFilledMapTest,
                         testing::Values(FailingCall{"Realm", "GetParam REALM", 1, 0},
                                         FailingCall{"RenewableLife", "GetParam TICKET_MAX_RENEWABLE_LIFE", 1,
                                                     1},
                                         FailingCall{"Life", "GetParam TICKET_MAX_LIFE", 1, 2},
                                         FailingCall{"Server", "GetServerName", 1, 3},
                                         FailingCall{"ServerId", "GetParam SERVER_ID", 1, 4},
                                         FailingCall{"MinimumUid", "GetParam MINIMUM_UID", 1, 5},
                                         FailingCall{"DomainDn", "GetParam DOMAIN_DN", 1, 6},
                                         FailingCall{"Domain", "GetDomainName", 1, 8},
                                         FailingCall{"ExportDir", "GetParam SERVER_EXPORT_DIR", 1, 9},
                                         FailingCall{"UserNames", "GetParam VALID_USER_NAMES", 1, 10},
                                         FailingCall{"GroupNames", "GetParam VALID_GROUP_NAMES", 1, 11},
                                         FailingCall{"Discovery", "IsServiceDiscovery", 1, 12},
                                         FailingCall{"LdapUris", "GetServerName", 2, 12},
                                         FailingCall{"KdcServer", "GetServerName", 3, 13},
                                         FailingCall{"KadminServer", "GetServerName", 4, 14}),
                         [](const testing::TestParamInfo<FailingCall>& info) { return info.param.name; });

}  // namespace
}  // namespace ZET
