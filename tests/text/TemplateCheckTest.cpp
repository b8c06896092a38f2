#include "TemplateLines.h"
#include "text/TemplateCheck.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <set>

#include "zet/ZETFormat.h"

namespace ZET::Text {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const StringMap kValues = {
    {"${realm}", "EXAMPLE.ORG"}, {"${server}", "srv"},    {"${both}", "${realm}/${server}"},
    {"${self}", "a ${self}"},    {"${there}", "${back}"}, {"${back}", "${there}"},
    {"${open}", "${"},           {"${half}", "${rea"}};

std::vector<std::string> Descriptions(const std::string& text, const StringMap& values = kValues) {
    std::vector<std::string> descriptions;
    for (const Problem& problem : CheckTemplate("t.conf", LinesOf(text), values))
        descriptions.push_back(problem.Describe());
    return descriptions;
}

/// With each line with a placeholder looked at by itself, because there is a value of several lines.
StringMap WithSeveralLines(StringMap values) {
    values["${lines}"] = "a\nb";
    return values;
}

/// The same of a text of which no line can be passed over, but for those of the markers and comments.
std::vector<std::string> WithEachLineLookedAt(const std::string& text) {
    std::string lines;
    for (const TextLine& line : SplitLines(text))
        lines.append(line.text)
            .append(line.text.empty() ? "" : " ${realm}")
            .append(line.hasLineFeed ? "\n" : "");
    return Descriptions(lines, WithSeveralLines(kValues));
}

std::string NoValue(const std::string& place, const std::string& placeholder) {
    return "t.conf:" + place + ": placeholder \"" + placeholder +
           "\" has no value (use one that \"values\" lists, correct its name, or write $NAME for another "
           "program)";
}

std::string NoEnd(const std::string& place) {
    return "t.conf:" + place +
           ": \"${\" has no \"}\" after it in its line (close the placeholder, take \"${\" out, or begin the "
           "line with #)";
}

std::string Endless(const std::string& place, const std::string& placeholder) {
    return "t.conf:" + place + ": the expansion of \"" + placeholder +
           "\" does not end within 100,000 replacements and 16 MiB (take the placeholder that leads back to "
           "it "
           "out of the values)";
}

std::string Inside(const std::string& line, const std::string& marker, const std::string& openedAt) {
    return "t.conf:" + line + ":1: \"" + marker + "\" inside a region that line " + openedAt +
           " opened (end that region before this line)";
}

TEST(TemplateCheck, EmptyTemplateIsFine) {
    EXPECT_THAT(Descriptions(""), IsEmpty());
}

TEST(TemplateCheck, KnownPlaceholdersAreFine) {
    EXPECT_THAT(Descriptions("realm = ${realm}\n\n${both} and ${server}"), IsEmpty());
}

TEST(TemplateCheck, UnknownPlaceholderIsToldWithItsPlace) {
    EXPECT_THAT(Descriptions("a\nrealm = ${realn}\n"), ElementsAre(NoValue("2:9", "${realn}")));
}

TEST(TemplateCheck, EveryUnknownPlaceholderOfALineIsTold) {
    EXPECT_THAT(Descriptions("${a} ${realm} ${b}${a}\n"),
                ElementsAre(NoValue("1:1", "${a}"), NoValue("1:15", "${b}"), NoValue("1:19", "${a}")));
}

TEST(TemplateCheck, ColumnsCountBytesOfTheTemplateAndNotOfValues) {
    EXPECT_THAT(Descriptions("\xc3\xa4 ${realm} ${x}\n"), ElementsAre(NoValue("1:13", "${x}")));
}

TEST(TemplateCheck, PlaceholderMadeByAValueIsToldWhereTheTemplateLedToIt) {
    EXPECT_THAT(Descriptions("x ${a}\n", {{"${a}", "${b}"}}), ElementsAre(NoValue("1:3", "${b}")));
}

TEST(TemplateCheck, UnknownPlaceholderKeepsTheOneInsideItFromNothing) {
    EXPECT_THAT(Descriptions("${max${realm}}\n"), ElementsAre(NoValue("1:1", "${max${realm}")));
}

TEST(TemplateCheck, PlaceholderThatAValueAndTheTemplateMakeTogetherIsReplaced) {
    EXPECT_THAT(Descriptions("${half}lm}\n"), IsEmpty());
}

TEST(TemplateCheck, PlaceholderWithoutEndIsTold) {
    EXPECT_THAT(Descriptions("a\nb ${realm\n}\n"), ElementsAre(NoEnd("2:3")));
}

TEST(TemplateCheck, PlaceholderWithoutEndFromAValueIsTold) {
    EXPECT_THAT(Descriptions("a ${open}\n"), ElementsAre(NoEnd("1:3")));
}

TEST(TemplateCheck, CommentLineMayHoldAnything) {
    EXPECT_THAT(Descriptions("# ${ ${unknown} ${self}\n#${\n"), IsEmpty());
}

TEST(TemplateCheck, BlankBeforeTheHashMakesNoComment) {
    EXPECT_THAT(Descriptions(" # ${\n"), ElementsAre(NoEnd("1:4")));
}

TEST(TemplateCheck, PlaceholderWithoutEndInATemplateCommentIsTold) {
    EXPECT_THAT(Descriptions("# --ZET_TEMPLATE_COMMENT--\nx ${\n# --ZET_COMMENT_END--\n"),
                ElementsAre(NoEnd("2:3")));
}

TEST(TemplateCheck, EndlessValueInATemplateCommentIsTold) {
    EXPECT_THAT(Descriptions("# --ZET_TEMPLATE_COMMENT--\n${self}\n# --ZET_COMMENT_END--\n"),
                ElementsAre(Endless("2:1", "${self}")));
}

TEST(TemplateCheck, UnknownPlaceholderInATemplateCommentReachesNoTarget) {
    EXPECT_THAT(Descriptions("# --ZET_TEMPLATE_COMMENT--\nuse ${anything}\n# --ZET_COMMENT_END--\n"),
                IsEmpty());
}

TEST(TemplateCheck, UnknownPlaceholderInANoticeDoesReachTheTarget) {
    EXPECT_THAT(Descriptions("x\n# --ZET_CONFIG_COMMENT--\nuse ${anything}\n# --ZET_COMMENT_END--\n"),
                ElementsAre(NoValue("3:5", "${anything}")));
}

TEST(TemplateCheck, NoticeAtItsBeginningIsTold) {
    const std::string notice = "# --ZET_CONFIG_COMMENT--\n# text\n# --ZET_COMMENT_END--\n";
    const auto stands = [](const std::string& place) {
        return "t.conf:" + place +
               ": \"# --ZET_CONFIG_COMMENT--\" in its first line keeps the notice out that names the "
               "template "
               "(take the notice out: a commit writes its own)";
    };
    EXPECT_THAT(Descriptions(notice + "x\n"), ElementsAre(stands("1:1")));
    EXPECT_THAT(Descriptions("\n\n" + notice), ElementsAre(stands("3:1")));
    EXPECT_THAT(Descriptions("x # --ZET_CONFIG_COMMENT--\n"), ElementsAre(stands("1:3")));
}

TEST(TemplateCheck, NoticeBehindOtherTextIsFine) {
    const std::string notice = "# --ZET_CONFIG_COMMENT--\n# text\n# --ZET_COMMENT_END--\n";
    EXPECT_THAT(Descriptions(" \n" + notice), IsEmpty());
    EXPECT_THAT(Descriptions("# --ZET_TEMPLATE_COMMENT--\n# --ZET_COMMENT_END--\n" + notice), IsEmpty());
}

/// A first line of which the check does not keep the middle says what it says when it is short.
TEST(TemplateCheck, NoticeIsFoundWhereverItStandsInAVeryLongFirstLine) {
    const StringMap values = {{"${x}", "x"}, {"${zet}", "ZET_"}};
    const std::string notice = "# --${zet}CONFIG_COMMENT--";
    for (const std::size_t before : {0, 1, 63, 16'000, 16'350, 16'383, 16'384, 16'400, 40'000, 100'000}) {
        for (const std::size_t after : {0, 1, 20'000, 70'000}) {
            std::string line = "ab${x}";
            while (line.size() < before)
                line += line.size() % 3 == 0 ? "c" : "${x}";
            const std::string rest = std::string(after, 'd') + "${x}\n";
            EXPECT_THAT(Descriptions(line + notice + rest, values), testing::SizeIs(1)) << before << after;
            EXPECT_THAT(Descriptions(line + rest, values), IsEmpty()) << before << after;
        }
    }
}

TEST(TemplateCheck, BeginningAndEndOfAVeryLongFirstLineAreNotTakenForANotice) {
    const std::string marker = ZETNoticeMarker;
    const std::string start = std::string(64 - 10, 'x') + marker.substr(0, 10);
    for (std::size_t behind = 0; behind < 20; ++behind) {
        const std::string end = marker.substr(10) + std::string(behind, 'z');
        EXPECT_THAT(Descriptions(start + std::string(40'000, 'y') + end + "${realm}\n"), IsEmpty());
    }
}

TEST(TemplateCheck, SignThatComesFirstIsFoundBehindManyBlanks) {
    const std::string blanks(40'000, ' ');
    EXPECT_THAT(Descriptions(blanks + "${sign}" + blanks + "\n", {{"${sign}", "{"}}), testing::SizeIs(1));
    EXPECT_THAT(Descriptions(blanks + "${sign}" + blanks + "x\n", {{"${sign}", "{"}}), IsEmpty());
    EXPECT_THAT(Descriptions("{${none}" + blanks + "\n", {{"${none}", ""}}), testing::SizeIs(1));
}

TEST(TemplateCheck, ValueThatHoldsItselfIsTold) {
    EXPECT_THAT(Descriptions("x\ny ${self}\n"), ElementsAre(Endless("2:3", "${self}")));
}

TEST(TemplateCheck, ValuesThatLeadToEachOtherAreTold) {
    const std::vector<std::string> descriptions = Descriptions("${there}\n");
    ASSERT_EQ(descriptions.size(), 1u);
    EXPECT_THAT(descriptions[0], testing::AnyOf(Endless("1:1", "${there}"), Endless("1:1", "${back}")));
}

TEST(TemplateCheck, OneValueMoreThanTheLimitIsTold) {
    StringMap values;
    const auto name = [](int i) { return "${" + std::to_string(i) + "}"; };
    for (int i = 0; i < 100'010; ++i)
        values[name(i)] = name(i + 1);
    values[name(99'990)] = "end";
    EXPECT_THAT(Descriptions(name(0), values), IsEmpty());
    values[name(99'990)] = name(99'991);
    values[name(100'010)] = "end";
    EXPECT_EQ(Descriptions(name(0), values).size(), 1u);
}

TEST(TemplateCheck, LineBeyondTheLimitIsTold) {
    const std::string mebibyte(1 << 20, 'x');
    std::string fifteen;
    for (int i = 0; i < 15; ++i)
        fifteen += "${m}";
    EXPECT_THAT(Descriptions(fifteen, {{"${m}", mebibyte}}), IsEmpty());
    EXPECT_THAT(Descriptions(fifteen + "${m}${m}${m}", {{"${m}", mebibyte}}),
                ElementsAre(Endless("1:65", "${m}")));
}

TEST(TemplateCheck, BalancedMarkersAreFine) {
    EXPECT_THAT(Descriptions("# ---ZET_BEGIN---\na\n# ----ZET_END----\n# --ZET_TEMPLATE_COMMENT--\n"
                             "# --ZET_COMMENT_END--\n# --ZET_CONFIG_COMMENT--\n# --ZET_COMMENT_END--\n"),
                IsEmpty());
}

TEST(TemplateCheck, MarkersThatDoNotBeginTheirLineAreText) {
    EXPECT_THAT(Descriptions(" # ---ZET_BEGIN---\nx # --ZET_TEMPLATE_COMMENT--\n"), IsEmpty());
}

TEST(TemplateCheck, BeginWithoutEndIsTold) {
    EXPECT_THAT(
        Descriptions("a\n# ---ZET_BEGIN---\nb\n"),
        ElementsAre("t.conf:2:1: \"# ---ZET_BEGIN---\" has no end (add a line \"# ----ZET_END----\")"));
}

TEST(TemplateCheck, TemplateCommentWithoutEndIsTold) {
    EXPECT_THAT(Descriptions("# --ZET_TEMPLATE_COMMENT--\nb\n"),
                ElementsAre("t.conf:1:1: \"# --ZET_TEMPLATE_COMMENT--\" has no end (add a line \"# "
                            "--ZET_COMMENT_END--\")"));
}

TEST(TemplateCheck, EndWithoutBeginIsTold) {
    EXPECT_THAT(Descriptions("a\n# ----ZET_END----\n# --ZET_COMMENT_END--\n"),
                ElementsAre("t.conf:2:1: \"# ----ZET_END----\" ends no region (add its begin, or take the "
                            "line out)",
                            "t.conf:3:1: \"# --ZET_COMMENT_END--\" ends no region (add its begin, or take "
                            "the line out)"));
}

TEST(TemplateCheck, NestedBeginIsTold) {
    EXPECT_THAT(Descriptions("# ---ZET_BEGIN---\n# ---ZET_BEGIN---\n# ----ZET_END----\n"),
                ElementsAre(Inside("2", "# ---ZET_BEGIN---", "1")));
}

TEST(TemplateCheck, CrossedRegionsAreToldWhereTheSecondOneBegins) {
    EXPECT_THAT(Descriptions("# ---ZET_BEGIN---\nx\n# --ZET_TEMPLATE_COMMENT--\n# ----ZET_END----\n"
                             "# --ZET_COMMENT_END--\ny\n"),
                ElementsAre(Inside("3", "# --ZET_TEMPLATE_COMMENT--", "1")));
    EXPECT_THAT(Descriptions("# --ZET_TEMPLATE_COMMENT--\n# ---ZET_BEGIN---\n# --ZET_COMMENT_END--\ny\n"
                             "# ----ZET_END----\n"),
                ElementsAre(Inside("2", "# ---ZET_BEGIN---", "1")));
}

TEST(TemplateCheck, RegionInsideOneOfTheOtherKindIsTold) {
    EXPECT_THAT(Descriptions("# ---ZET_BEGIN---\n# --ZET_CONFIG_COMMENT--\n# --ZET_COMMENT_END--\n"
                             "# ----ZET_END----\n"),
                ElementsAre(Inside("2", "# --ZET_CONFIG_COMMENT--", "1")));
    EXPECT_THAT(Descriptions("# --ZET_TEMPLATE_COMMENT--\n# ---ZET_BEGIN---\n# ----ZET_END----\n"
                             "# --ZET_COMMENT_END--\n"),
                ElementsAre(Inside("2", "# ---ZET_BEGIN---", "1")));
}

TEST(TemplateCheck, EachCrossingIsToldOnce) {
    const std::string crossed =
        "# ---ZET_BEGIN---\n# --ZET_TEMPLATE_COMMENT--\n# ----ZET_END----\n# --ZET_COMMENT_END--\n";
    EXPECT_THAT(Descriptions(crossed + crossed), ElementsAre(Inside("2", "# --ZET_TEMPLATE_COMMENT--", "1"),
                                                             Inside("6", "# --ZET_TEMPLATE_COMMENT--", "5")));
}

TEST(TemplateCheck, RegionsThatFollowOneWithoutEndAreNotToldOneByOne) {
    const std::string comment = "# --ZET_TEMPLATE_COMMENT--\n# --ZET_COMMENT_END--\n";
    EXPECT_THAT(
        Descriptions("# ---ZET_BEGIN---\n" + comment + comment + comment),
        ElementsAre(Inside("2", "# --ZET_TEMPLATE_COMMENT--", "1"),
                    "t.conf:1:1: \"# ---ZET_BEGIN---\" has no end (add a line \"# ----ZET_END----\")"));
}

TEST(TemplateCheck, AllProblemsAreToldInOneGo) {
    EXPECT_EQ(Descriptions("${a}\n${\n${self}\n# ---ZET_BEGIN---\n# --ZET_COMMENT_END--\n").size(), 5u);
}

TEST(TemplateCheck, PlaceholdersThatItAsksForAreUsed) {
    std::set<std::string> used;
    CheckTemplate("t.conf", LinesOf("${both} ${unknown}\n# ${self}\n"), kValues, &used);
    EXPECT_THAT(used, ElementsAre("${both}", "${realm}", "${server}", "${unknown}"));
}

TEST(TemplateCheck, TemplatesWithTheSameValuesAreJudgedEachByItself) {
    std::set<std::string> used;
    ValuesToCheck values(kValues, &used);
    EXPECT_THAT(CheckTemplate("broken", LinesOf("x ${server}\n# --ZET_TEMPLATE_COMMENT--\n"), values),
                SizeIs(1));
    EXPECT_THAT(CheckTemplate("fine", LinesOf("x ${server} ${realm}\n"), values), IsEmpty());
    EXPECT_THAT(CheckTemplate("fine", LinesOf("#!/bin/sh\n"), values, false), IsEmpty());
    EXPECT_THAT(CheckTemplate("broken", LinesOf("#!/bin/sh\n"), values), SizeIs(1));
    EXPECT_THAT(used, ElementsAre("${realm}", "${server}"));
}

TEST(TemplateCheck, LinesThatArePassedOverWouldNotHaveBeenToldOf) {
    const std::vector<std::string> pieces = {"plain\n",
                                             "# a comment\n",
                                             "\n",
                                             "x=${realm}\n",
                                             "y=${nobody}\n",
                                             "# ---ZET_BEGIN---\n",
                                             "# ----ZET_END----\n",
                                             "# --ZET_TEMPLATE_COMMENT--\n",
                                             "# --ZET_COMMENT_END--\n",
                                             "a # --ZET_COMMENT_END--\n"};
    // Each text of three pieces behind a first line, in one piece and line by line.
    const std::size_t count = pieces.size();
    for (std::size_t number = 0; number < count * count * count; ++number) {
        std::string text = "first\n";
        for (std::size_t rest = number, i = 0; i < 3; ++i, rest /= count)
            text += pieces[rest % count];
        text += "last";
        EXPECT_EQ(Descriptions(text), WithEachLineLookedAt(text)) << text;
        EXPECT_EQ(CheckTemplate("t", LinesOf(text), kValues).size(),
                  CheckTemplate("t", LineByLine(text), kValues).size())
            << text;
    }
}

/// Long enough for what is passed over in runs, and with everything that ends one.
TEST(TemplateCheck, LinesPassedOverInRunsAreJudgedAsEachByItself) {
    const std::vector<std::string> pieces = {
        "a = ", "${realm}", "${server}", "${both}", "${none}", "$",    "}",
        "{",    "${",       "# ",        "{realm}", "${sign}", "\n",   "\n",
        "x ",   "# --",     "${realm}",  " ",       "text ",   "\n# ", "\n\n"};
    StringMap values = kValues;
    values["${sign}"] = "a$";
    std::mt19937 random(11);
    for (int i = 0; i < 3000; ++i) {
        std::string text;
        for (std::size_t count = random() % 120; count > 0; --count)
            text += pieces[random() % pieces.size()];
        std::set<std::string> used;
        std::set<std::string> usedByEach;
        const auto together = CheckTemplate("t", LinesOf(text), values, &used);
        const auto each = CheckTemplate("t", LineByLine(text), WithSeveralLines(values), &usedByEach);
        ASSERT_EQ(together.size(), each.size()) << text;
        for (std::size_t problem = 0; problem < each.size(); ++problem)
            ASSERT_EQ(together[problem].Describe(), each[problem].Describe()) << text;
        ASSERT_EQ(used, usedByEach) << text;
    }
}

TEST(TemplateCheck, ValueThatEndsWithADollarBeginsAPlaceholderWithWhatComesBehindIt) {
    const StringMap values = {{"${sign}", "$"}, {"${realm}", "R"}};
    const std::string before = "first\n";
    for (const char* fine : {"x ${sign}", "x ${sign}${realm}", "x ${sign} {nobody}", "x ${sign}{realm}"})
        EXPECT_THAT(CheckTemplate("t", LinesOf(before + fine + "\n"), values), IsEmpty()) << fine;
    EXPECT_THAT(CheckTemplate("t", LinesOf(before + "x ${sign}{nobody}\n"), values), SizeIs(1));
    EXPECT_THAT(CheckTemplate("t", LinesOf(before + "x ${realm} ${sign}{nobody\n"), values), SizeIs(1));
}

TEST(TemplateCheck, PlaceholdersOfAVeryLongLineAreToldAndUsed) {
    for (const std::string start : {"", "before\n", "before\n#", "before\n${realm}"}) {
        std::string line = start + std::string(100, 'x');
        for (int i = 0; i < 5000; ++i)
            line += "${realm} and more ";
        std::set<std::string> used;
        EXPECT_TRUE(CheckTemplate("t", LinesOf(line), kValues, &used).empty());
        EXPECT_EQ(used.contains("${realm}"), !start.ends_with('#'));
        const auto problems = CheckTemplate("t", LinesOf(line + "${none}\n"), kValues, &used);
        EXPECT_EQ(problems.size(), start.ends_with('#') ? 0U : 1U) << start;
        EXPECT_EQ(used.contains("${none}"), !start.ends_with('#'));
    }
}

TEST(TemplateCheck, NoticeInAVeryLongFirstLineIsFoundWhereverItComesFrom) {
    const std::string before = "key = " + std::string(40'000, 'x');
    const std::string sign = "${sign}";
    const StringMap values = {{"${sign}", "#"}, {"${plain}", "plain"}};
    const std::string marker = std::string(ZETNoticeMarker).substr(1);
    EXPECT_EQ(CheckTemplate("t", LinesOf(before + "#" + marker + "\n"), values).size(), 1U);
    EXPECT_EQ(CheckTemplate("t", LinesOf(before + sign + marker + "\n"), values).size(), 1U);
    EXPECT_TRUE(CheckTemplate("t", LinesOf(before + "${plain}" + marker + "\n"), values).empty());
    EXPECT_EQ(CheckTemplate("t", LinesOf(before + "#" + marker + "\n"), {}).size(), 1U);
    EXPECT_TRUE(CheckTemplate("t", LinesOf(before + marker + "\n"), {}).empty());
}

}  // namespace

}  // namespace ZET::Text
