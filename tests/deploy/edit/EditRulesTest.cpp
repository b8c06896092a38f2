#include "deploy/targets/EditRules.h"

#include <gmock/gmock.h>

#include "../HostFixture.h"
#include "deploy/host/Failure.h"
#include "zet/ZETErrors.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {
namespace {

using testing::HasSubstr;

const std::string kBlock =
    std::string(ZETFormerLinePrefix) + "a=0\n" + ZETBeginMarker + "\na=1\n" + ZETEndMarker + "\n";

class EditRulesTest : public testing::Test {
  protected:
    IZETCore& Core() { return m_core.GetCore(); }

    bool Selects(const std::string& pattern, const std::string& line) {
        return Core().MatchRegEx(pattern, line, nullptr, 0);
    }

    std::string GuardedFor(const std::string& text, const std::string& pattern) {
        return PatternForSet(Core(), "/f", text, pattern);
    }

    void RequireLiteral(const std::string& name, const std::string& text = "") {
        RequireLiteralName(Core(), "/f", text, ZETEditOpening, name);
    }

    CZETHost m_core;
};

TEST_F(EditRulesTest, TextOfALineIsOneLine) {
    EXPECT_NO_THROW(RequireOneLine("", "VALUE"));
    EXPECT_NO_THROW(RequireOneLine("a\rb", "VALUE"));
    EXPECT_EQ(MessageOf<UsageError>([] { RequireOneLine("a\n", "VALUE"); }),
              "VALUE holds a line feed (a line cannot; give the text without it)");
}

TEST_F(EditRulesTest, LineThatTheSystemWouldTakeForItsOwnIsRefused) {
    for (const char* marker : {ZETBeginMarker, ZETEndMarker, ZETNoticeMarker, ZETTemplateCommentMarker,
                               ZETCommentEndMarker, ZETFormerLinePrefix}) {
        EXPECT_THAT(MessageOf<UsageError>([&] { RequireNoMarker(std::string(marker) + "x"); }),
                    HasSubstr(std::string("LINE begins with \"") + marker))
            << marker;
        EXPECT_NO_THROW(RequireNoMarker(std::string("x") + marker)) << marker;
    }
}

TEST_F(EditRulesTest, PatternIsAValidExpression) {
    EXPECT_NO_THROW(RequirePattern(Core(), "^a"));
    EXPECT_EQ(MessageOf<UsageError>([&] { RequirePattern(Core(), ""); }),
              "PATTERN is empty (give a regular expression)");
    EXPECT_THAT(MessageOf<UsageError>([&] { RequirePattern(Core(), "(a"); }),
                AllOf(HasSubstr("PATTERN: "), HasSubstr("(correct the expression)")));
}

TEST_F(EditRulesTest, ParamNameIsANameAlone) {
    for (const char* name : {"a", "a b", "a.b", "a#", "[section]"})
        EXPECT_NO_THROW(RequireParamName(name)) << name;
    for (const auto& [name, what] :
         std::map<std::string, std::string>{{"", "NAME is empty"},
                                            {"a\nb", "NAME holds a line feed"},
                                            {"a=b", "holds \"=\" (give name and value apart)"},
                                            {"#a", "begins with \"#\" or a blank"},
                                            {" a", "begins with \"#\" or a blank"},
                                            {"\ta", "begins with \"#\" or a blank"}})
        EXPECT_THAT(MessageOf<UsageError>([&, &name = name] { RequireParamName(name); }), HasSubstr(what));
}

TEST_F(EditRulesTest, OptionNameHasTheLettersOfParameters) {
    for (const char* name : {"A", "_a", "ZET_SYNC", "a1"})
        EXPECT_NO_THROW(RequireOptionName(name, "NAME")) << name;
    for (const char* name : {"", "1a", "a-b", "a b", "a=", "\xc3\xa9"})
        EXPECT_THAT(MessageOf<UsageError>([&] { RequireOptionName(name, "--set"); }),
                    HasSubstr(std::string("--set \"") + name + "\" is no name of a parameter"))
            << name;
}

TEST_F(EditRulesTest, NameWithoutSpecialLettersSelectsOnlyItself) {
    for (const char* name : {"a", "a b", "a-b_c/d"})
        EXPECT_TRUE(IsLiteralName(name)) << name;
    for (const char* name : {"a.b", "a*", "a+", "a?", "(a)", "[a]", "{a}", "a|b", "^a", "a$", "a\\"})
        EXPECT_FALSE(IsLiteralName(name)) << name;
}

TEST_F(EditRulesTest, NameOfSpecialLettersIsFineWhereItSelectsOnlyItself) {
    EXPECT_NO_THROW(RequireLiteral("net.ipv4", "net.ipv4=1\n# net.ipv4=2\nother=1\n"));
    EXPECT_NO_THROW(RequireLiteral("net.ipv4", std::string(ZETFormerLinePrefix) + "net.ipv4=1\n"));
    EXPECT_THAT(MessageOf<UsageError>([&] { RequireLiteral("net.ipv4", "x=1\nnet_ipv4=1\n"); }),
                AllOf(HasSubstr("NAME \"net.ipv4\" also selects line 2 of /f"), HasSubstr("use \"line\"")));
}

TEST_F(EditRulesTest, NameThatDoesNotSelectItselfIsRefused) {
    EXPECT_THAT(MessageOf<UsageError>([&] { RequireLiteral("a+b"); }), HasSubstr("does not select itself"));
    EXPECT_THAT(MessageOf<UsageError>([&] { RequireLiteral("(a"); }), HasSubstr("NAME \"(a\": "));
}

TEST_F(EditRulesTest, PatternThatSelectsNoLineOfTheSystemStaysAsItIs) {
    EXPECT_EQ(GuardedFor("a=1\nb=2\n", "a"), "a");
    EXPECT_EQ(GuardedFor(kBlock, "^a="), "^a=");
}

TEST_F(EditRulesTest, PatternIsKeptFromLinesOfTheSystem) {
    const std::string guarded = GuardedFor(kBlock, "a=|ZET");
    for (const std::string& line :
         {std::string(ZETBeginMarker), std::string(ZETEndMarker), std::string(ZETFormerLinePrefix) + "a=0"})
        EXPECT_FALSE(Selects(guarded, line)) << line;
    EXPECT_TRUE(Selects(guarded, "a=1"));
    EXPECT_TRUE(Selects(guarded, "x ZET")) << "a line of somebody else's";
    EXPECT_FALSE(Selects(guarded, "b=1"));
}

TEST_F(EditRulesTest, PatternIsKeptFromTheTextOfANoticeThatHasAnEnd) {
    const std::string notice = std::string(ZETNoticeMarker) + "\n# Made (by *a*).\n";
    const std::string closed = notice + ZETCommentEndMarker + "\na=1\n";
    const std::string guarded = GuardedFor(closed, "a");
    EXPECT_FALSE(Selects(guarded, "# Made (by *a*)."));
    EXPECT_TRUE(Selects(guarded, "# Made (by *a*). Not the same"));
    EXPECT_TRUE(Selects(GuardedFor(notice + "a=1\n", "by"), "# Made (by *a*).")) << "the administrator's";
}

TEST_F(EditRulesTest, PatternThatCannotBeGuardedIsRefused) {
    EXPECT_THAT(
        MessageOf<UsageError>([&] { GuardedFor(kBlock, "\\Qa="); }),
        AllOf(HasSubstr("also selects lines of /f that the system wrote"), HasSubstr("begins with \"^\"")));
}

}  // namespace
}  // namespace ZET::Deploy
