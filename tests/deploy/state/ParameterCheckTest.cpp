#include "deploy/state/ParameterCheck.h"

#include "deploy/state/ConfFile.h"
#include "deploy/state/ParameterNames.h"

#include <gmock/gmock.h>

#include "../HostFixture.h"

namespace ZET::Deploy {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A main file, the values that the module would make of it, and the placeholders that templates use.
class ParameterCheckTest : public HostFixture {
  protected:
    std::vector<std::string> ProblemsOfValues(const std::string& lines, const StringMap& values = {},
                                              const std::set<std::string>& used = {}) {
        Write("zet.conf", lines + Directories());
        return Told(CheckParameterValues(AnotherRun().Core(), values, used));
    }

    std::vector<std::string> ProblemsOfNames(const std::string& lines,
                                             const std::set<std::string>& used = {}) {
        Write("zet.conf", lines + Directories());
        AnotherRun();
        const UnusedParameters unused =
            FindUnusedParameters(At("zet.conf"), ReadConfText("", Read("zet.conf")).given, used, {"ASKED"});
        std::vector<std::string> told = Told(unused.mistyped);
        for (const std::string& text : Told(unused.unused))
            told.push_back("warning: " + text);
        return told;
    }

    std::string OfPlace(const std::string& place, const std::string& text) const {
        return At("zet.conf") + ":" + place + ": " + text;
    }

  private:
    static std::vector<std::string> Told(const std::vector<Problem>& problems) {
        std::vector<std::string> told;
        for (const Problem& problem : problems)
            told.push_back(problem.Describe());
        return told;
    }
};

TEST_F(ParameterCheckTest, SoundValuesAreNoProblem) {
    EXPECT_THAT(ProblemsOfValues("DOMAIN=example.org\nSERVER_ID=7\nOWN=anything\n",
                                 {{"${domain}", "example.org"}}, {"${domain}", "${own}"}),
                IsEmpty());
}

TEST_F(ParameterCheckTest, ValueWithPlaceholdersIsJudgedAsATemplateMakesIt) {
    const auto problems = [&](const std::string& value) {
        return ProblemsOfValues("SERVER_EXPORT_DIR=/srv/${own}\n", {{"${own}", value}, {"${other}", "a\"b"}});
    };
    EXPECT_THAT(problems("a b"), IsEmpty());
    EXPECT_THAT(problems("${missing}"), IsEmpty()) << "which who uses it is told";
    EXPECT_THAT(problems("${own}"), IsEmpty()) << "likewise";
    for (const char* value : {"a\"b", "${other}"})
        EXPECT_THAT(problems(value),
                    ElementsAre(OfPlace("1:19",
                                        "'/srv/a\"b' is no value for SERVER_EXPORT_DIR, which has to be an "
                                        "absolute path (begin it with \"/\", and leave out double quotes, "
                                        "backslashes and control characters)")));
    EXPECT_THAT(problems("a\nb"), ElementsAre(OfPlace("1:19",
                                                      "the value of SERVER_EXPORT_DIR holds a line feed or "
                                                      "a NUL byte (give it without)")));
}

TEST_F(ParameterCheckTest, ValueThatNobodySetIsToldOnceForWhoUsesIt) {
    EXPECT_THAT(ProblemsOfValues("", {}, {}), IsEmpty()) << "nobody uses it";
    EXPECT_THAT(
        ProblemsOfValues("", {{"${domain}", ""}}, {"${domain}", "${realm}"}),
        ElementsAre(At("zet.conf") + ": DOMAIN is not set, so that ${domain} has no value (add a line "
                                     "DOMAIN=VALUE, or use \"option set\")"));
}

TEST_F(ParameterCheckTest, ValueThatIsEmptyIsToldWithItsLine) {
    EXPECT_THAT(ProblemsOfValues("DOMAIN=example.org\nREALM=\n", {{"${realm}", ""}}, {"${realm}"}),
                ElementsAre(OfPlace("2:7",
                                    "REALM is empty, so that ${realm} has no value (give it a value, or "
                                    "remove its line)")));
}

TEST_F(ParameterCheckTest, ValueOfWhichNothingCanBeMadeIsTold) {
    EXPECT_THAT(ProblemsOfValues("SERVER=.\n", {{"${ldap_uris}", "ldap://"}}, {"${ldap_uris}"}).back(),
                testing::HasSubstr("SERVER has nothing to make ${ldap_uris} of (correct its value)"));
}

TEST_F(ParameterCheckTest, ValueThatHoldsTooMuchIsTold) {
    EXPECT_THAT(ProblemsOfValues("OWN=x\r\nOTHER=\"x\" # why\n"),
                ElementsAre(OfPlace("1:5",
                                    "the value of OWN ends with a carriage return (save the file with plain "
                                    "line feeds)"),
                            OfPlace("2:7",
                                    "the value of OTHER is in quotes with a comment behind, and has both as "
                                    "parts of it (write the bare value alone behind \"=\")")));
}

TEST_F(ParameterCheckTest, ValueOfAnotherKindIsToldUnlessALaterLineHasTheLastWord) {
    EXPECT_EQ(ProblemsOfValues("SERVER_ID=x\n").size(), 1U);
    EXPECT_THAT(ProblemsOfValues("SERVER_ID=x\nSERVER_ID=7\n"), IsEmpty());
    const std::vector<std::string> twice = ProblemsOfValues("SERVER_ID=x\nSERVER_ID=x\n");
    ASSERT_EQ(twice.size(), 1U);
    EXPECT_TRUE(twice[0].starts_with(At("zet.conf") + ":2:")) << twice[0];
}

TEST_F(ParameterCheckTest, NameThatNobodyKnowsIsToldWithTheNearest) {
    EXPECT_THAT(
        ProblemsOfNames("DOMIAN=x\nNTP_SERVER=x\nDOMAIN=y\nASKED=z\n"),
        ElementsAre(
            OfPlace("1",
                    "nobody knows the parameter DOMIAN, and nothing uses ${domian} (did you "
                    "mean DOMAIN?)"),
            "warning: " + OfPlace("2",
                                  "nobody knows the parameter NTP_SERVER, and nothing uses ${ntp_server} "
                                  "(correct its name, or remove the line)")));
}

TEST_F(ParameterCheckTest, NameThatATemplateUsesIsKnown) {
    EXPECT_THAT(ProblemsOfNames("NTP_SERVER=x\n", {"${ntp_server}"}), IsEmpty());
}

TEST(ParameterCheck, LinesOfParametersAreRead) {
    const std::vector<GivenParameter> given = ReadConfText("", "# a=1\n\n  DOMAIN=x=y \nREALM=\r\n").given;
    ASSERT_EQ(given.size(), 2u);
    EXPECT_EQ(given[0].line, 3);
    EXPECT_EQ(given[0].name, "DOMAIN");
    EXPECT_EQ(given[0].value, "x=y ");
    EXPECT_EQ(given[0].column, 10);
    EXPECT_EQ(given[1].name, "REALM");
    EXPECT_EQ(given[1].value, "\r");
}

TEST(ParameterCheck, NearNameIsFound) {
    std::vector<std::string> known;
    for (const ZETParameter& parameter : KnownParameters())
        known.push_back(parameter.name);
    EXPECT_EQ(NearestName("TICKET_MAX_LIVE", known), "TICKET_MAX_LIFE");
    EXPECT_EQ(NearestName("RAELM", known), "REALM");
    EXPECT_EQ(NearestName("DOMAINS", known), "DOMAIN");
    EXPECT_EQ(NearestName("NTP_SERVER", known), "");
    EXPECT_EQ(NearestName("ZET_CONFIG_DIR", known), "");
}

TEST(ParameterCheck, LettersThatAreExchangedAreOneMistake) {
    EXPECT_EQ(NearestName("lsit", {"set", "list"}), "list");
    EXPECT_EQ(NearestName("hsitoyr", {"history"}), "history");
    EXPECT_EQ(NearestName("--ot", {"--root", "--to"}), "--to");
}

TEST(ParameterCheck, ShortNameIsNoOtherWithTwoMistakes) {
    EXPECT_EQ(NearestName("list", {"line"}), "");
    EXPECT_EQ(NearestName("--to", {"--log", "--root"}), "");
    EXPECT_EQ(NearestName("lsst", {"list"}), "list");
    EXPECT_EQ(NearestName("ot", {"to"}), "to");
    EXPECT_EQ(NearestName("statsu", {"status"}), "status");
    EXPECT_EQ(NearestName("sttaus", {"status", "statue"}), "status");
    EXPECT_EQ(NearestName("chnage", {"change"}), "change");
}

TEST(ParameterCheck, QuotesWithACommentBehindAreSeen) {
    for (const char* value : {"\"x\" # c", "'x y'\t#c", "\"\" #"})
        EXPECT_TRUE(IsQuotedWithComment(value)) << value;
    for (const char* value : {"", "x # c", "\"x\"", "\"x\"#c", "\"x # c", "\"x\" y", "\"x\" "})
        EXPECT_FALSE(IsQuotedWithComment(value)) << value;
}

}  // namespace
}  // namespace ZET::Deploy
