#include "Support.h"

namespace ZET::Test {
namespace {

using Values = std::vector<std::string>;

/// What the values of a parameter may be, and what not.
void ExpectValues(const std::string& key, const Values& accepted, const Values& refused) {
    for (const std::string& value : accepted)
        EXPECT_EQ(ProblemTextOf(key, value), "") << key << "=" << value;
    for (const std::string& value : refused)
        EXPECT_THAT(ProblemTextOf(key, value),
                    testing::HasSubstr("is no value for " + key + ", which has to be "))
            << key << "=" << value;
}

TEST(ParameterKinds, DomainNamesAreLabels) {
    const std::string longest(63, 'a');
    ExpectValues("DOMAIN",
                 {"", "example.org", ".example.org", "lab", "a-b.x_y.1", "EXAMPLE.org", longest + ".org"},
                 {".", "..lab.net", "example..org", "example.org.", "-a.org", "a-.org", "a b", " example.org",
                  "example.org ", "a/b", "exämple.org", "\"x\"", longest + "a.org",
                  longest + "." + longest + "." + longest + "." + longest});
}

TEST(ParameterKinds, HostNamesAreLabelsWithoutADotBefore) {
    ExpectValues("SERVER", {"", "srv", "srv.example.org", "192.0.2.1"},
                 {".srv", "srv.", "srv:389", "ldap://srv", "one two", "2001:db8::1"});
}

TEST(ParameterKinds, RealmsAreOneWordThatKerberosCanRead) {
    ExpectValues("REALM", {"", "EXAMPLE.ORG", "lab", "C=US/O=LAB", "A_B-1"},
                 {"EXAMPLE ORG", "X # c", "A@B", "{", "[x]", "\"X\"", "X;", "A\\B", "Ä", "A\t"});
}

TEST(ParameterKinds, LdapNamesAreAttributesWithValues) {
    ExpectValues(
        "DOMAIN_DN",
        {"", "dc=example,dc=org", "o=x, dc=y", "ou=Some People,o=x", "cn=a\\,b,o=x", "0.9.2342=x", "cn=a=b"},
        {"ou", "dc=", "=x", "dc=a,", "dc=a,,dc=b", ",dc=a", "dc=a,org", "dc=a\\", "d c=a", "dc=a, ", "-a=b",
         "dc= ,o=x"});
}

TEST(ParameterKinds, NumbersAreDecimalDigits) {
    for (const char* key : {"MINIMUM_UID", "SERVER_ID"})
        ExpectValues(key, {"", "0", "1", "10000", "4294967295"},
                     {"abc", "-1", "+1", "1.5", "010", "00", "0x10", " 1", "1 ", "4294967296",
                      "99999999999999999999999999"});
}

TEST(ParameterKinds, DurationsAreWrittenAsKerberosReadsThem) {
    for (const char* key : {"TICKET_MAX_LIFE", "TICKET_MAX_RENEWABLE_LIFE"})
        ExpectValues(key,
                     {"", "10h 0m 0s", "7d 0h 0m 0s", "7d", "10h", "1d12h", "90m", "30s", "0", "36000",
                      "10:30", "10:30:15", "7-12:00:00", "2147483647"},
                     {"foo",
                      "10 h",
                      "h",
                      "10x",
                      "1h 1d",
                      "1h 1h",
                      "10h,5m",
                      "10h 5",
                      "10:",
                      ":10",
                      "1:2:3:4",
                      "7-12",
                      "7-12:00",
                      "7-12-00:00",
                      "-1",
                      "1.5h",
                      "2147483648",
                      "24856d",
                      "99999999999999999999",
                      "10h \v",
                      "1w"});
}

TEST(ParameterKinds, RegularExpressionsCanBeCompiled) {
    for (const char* key : {"VALID_USER_NAMES", "VALID_GROUP_NAMES"})
        ExpectValues(key, {"", "^[a-z_][a-z0-9_-]*$", "a|b", "\\w+", "x{2}", " ", "[/]", "[]/]", "[^]/]"},
                     {"[", "(", "a)", "*", "\\", "[z-a]", "a/b", "\\/", "[a]/"});
}

TEST(ParameterKinds, PathsAreAbsolute) {
    ExpectValues("SERVER_EXPORT_DIR", {"", "/", "/srv/zet", "/a b"}, {"srv", "./srv", "~/srv", " /srv"});
    // A template has it in quotes, as the list of what is exported does.
    ExpectValues("SERVER_EXPORT_DIR", {"/it's", "/ä", "/a#b", "/a(b)"},
                 {"/a\"b", "/a\\b", "/a\\040b", "/a\tb", "/a\x7f", "/a\xff", "/a\\"});
    for (const char* key : {"ZET_CFG_DIR", "ZET_CFG_TEMPL_DIR", "ZET_VAR_LIB_DIR"})
        ExpectValues(key, {"/", "/etc/zet"}, {"etc", "${realm}"});
}

TEST(ParameterKinds, FlagsAreYesOrNo) {
    for (const char* key : {"SERVICE_DISCOVERY", "ZET_SYNC"}) {
        for (const char* value : {"yes", "no", "true", "false", "1", "0"})
            EXPECT_EQ(ProblemTextOf(key, value), "") << value;
        for (const char* value : {"", "maybe", "YES", "on", "yes ", "${realm}"})
            EXPECT_THAT(ProblemTextOf(key, value), testing::HasSubstr("counts as")) << value;
    }
}

TEST(ParameterKinds, LocalesAreThoseOfTheHost) {
    ExpectValues("ZET_LANG", {"", "C", "POSIX", "C.UTF-8"}, {"xx_YY", "C/../C", "c u", "${realm}"});
}

TEST(ParameterKinds, FileSystemsAreOneOfSomeWords) {
    ExpectValues("NETWORK_FS_TYPE", {"", "nfs4", "nfs", "cifs", "smb3"}, {"nfs 4", "NFS4", "ext4"});
}

TEST(ParameterKinds, ValueOfATemplateMayBeMadeOfAPlaceholder) {
    for (const char* key : {"DOMAIN", "SERVER", "REALM", "DOMAIN_DN", "MINIMUM_UID", "TICKET_MAX_LIFE"})
        EXPECT_EQ(ProblemTextOf(key, "a b${realm}"), "") << key;
}

TEST(ParameterKinds, ProblemTellsTheKindAndHowToWriteIt) {
    EXPECT_EQ(ProblemTextOf("MINIMUM_UID", "a\x1b"),
              "'a\\x1b' is no value for MINIMUM_UID, which has to be a number (write decimal digits, up to "
              "4294967295 and without zeros in front)");
    EXPECT_EQ(ProblemTextOf("NETWORK_FS_TYPE", "x"),
              "'x' is no value for NETWORK_FS_TYPE, which has to be one of nfs4, nfs, cifs, smb3, afs, ceph, "
              "glusterfs (write one of them)");
    EXPECT_EQ(ProblemTextOf("ZET_CFG_DIR", ""),
              "ZET_CFG_DIR is empty (give it an absolute path, or remove its line)");
}

TEST(ParameterKinds, DefaultsAreOfTheirKinds) {
    for (const ZETParameter& parameter : KnownParameters())
        EXPECT_EQ(ProblemTextOf(parameter.name, parameter.value), "");
}

}  // namespace
}  // namespace ZET::Test
