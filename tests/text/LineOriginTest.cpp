#include "text/LineOrigin.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using ZET::Text::CanBecome;
using ZET::Text::LineOrigin;
using ZET::Text::ManagedText;
using ZET::Text::TraceLines;

namespace {

constexpr char kNotice[] = "# --ZET_CONFIG_COMMENT--\n# text\n# --ZET_COMMENT_END--\n";
constexpr char kComment[] = "# --ZET_TEMPLATE_COMMENT--\n# about\n# --ZET_COMMENT_END--\n";

/// For each line the number of the template's; "-" none, "!" behind it for one that differs, "?" unknown.
std::string Trace(const std::string& file, const std::string& templateText,
                  const ZET::StringMap& values = {}) {
    const ManagedText text(file);
    std::string trace;
    for (const LineOrigin& origin : TraceLines(text, templateText, values)) {
        if (!trace.empty()) trace += ' ';
        switch (origin.certainty) {
            case LineOrigin::Certainty::None:
                trace += '-';
                break;
            case LineOrigin::Certainty::Rendered:
                trace += std::to_string(origin.templateLine);
                break;
            case LineOrigin::Certainty::Differs:
                trace += std::to_string(origin.templateLine) + "!";
                break;
            case LineOrigin::Certainty::Unknown:
                trace += '?';
                break;
        }
    }
    return trace;
}

}  // namespace

TEST(LineOrigin, LinesBehindTheNoticeAreTheTemplatesInOrder) {
    EXPECT_EQ(Trace(std::string(kNotice) + "a\nx=EXAMPLE\n", "a\nx=${realm}\n"), "- - - 1 2");
}

TEST(LineOrigin, TemplateCommentsAndEmptyLinesAtTheTopHaveNoLine) {
    EXPECT_EQ(
        Trace(std::string(kNotice) + "a\nb\n", std::string("\n\n") + kComment + "a\n" + kComment + "b\n"),
        "- - - 6 10");
}

TEST(LineOrigin, EmptyLineBehindATemplateCommentIsALine) {
    EXPECT_EQ(Trace(std::string(kNotice) + "\na\n", std::string(kComment) + "\na\n"), "- - - 4 5");
}

TEST(LineOrigin, StrayCommentEndOfATemplateIsALine) {
    EXPECT_EQ(Trace(std::string(kNotice) + "# --ZET_COMMENT_END--\na\n", "# --ZET_COMMENT_END--\na\n"),
              "- - - 1 2");
}

TEST(LineOrigin, NoticeOfTheTemplateItselfIsTraced) {
    EXPECT_EQ(Trace(std::string(kNotice) + "a\n", std::string(kNotice) + "a\n"), "1 2 3 4");
}

TEST(LineOrigin, ChangedLineIsToldFromARenderedOne) {
    EXPECT_EQ(Trace(std::string(kNotice) + "a\nother\nc\n", "a\nb\nc\n"), "- - - 1 2! 3");
}

TEST(LineOrigin, LinesAroundAnAddedOneAreStillCertain) {
    EXPECT_EQ(Trace(std::string(kNotice) + "a\nmine\nb\nc\n", "a\nb\nc\n"), "- - - 1 ? 2 3");
}

TEST(LineOrigin, LinesAroundALostOneAreStillCertain) {
    EXPECT_EQ(Trace(std::string(kNotice) + "a\nc\n", "a\nb\nc\n"), "- - - 1 3");
}

TEST(LineOrigin, NoLineIsCountedTwice) {
    EXPECT_EQ(Trace(std::string(kNotice) + "a\na\n", "a\na\na\n"), "- - - 1 2");
    EXPECT_EQ(Trace(std::string(kNotice) + "a\na\na\n", "a\na\n"), "- - - 1 2 ?");
}

TEST(LineOrigin, LinesOfOneValueComeFromOneLine) {
    const ZET::StringMap values = {{"${more}", "1\n\n${realm}"}, {"${realm}", "EXAMPLE"}, {"${one}", "1"}};
    const std::string templateText = "a ${one}\n<${more}>\n# ${more}\nb ${unknown}\n";
    EXPECT_EQ(Trace("a 1\n<1\n\nEXAMPLE>\n# ${more}\nb !{unknown}\n", templateText, values), "1 2 2 2 3 4");
    EXPECT_EQ(Trace("a 1\n<1\nx\nEXAMPLE>\n# ${more}\nb y\n", templateText, values), "1 2 2! 2 3 4");
    EXPECT_EQ(Trace("a 1\n<1\nEXAMPLE>\n# ${more}\nb y\n", templateText, values), "1 2 2 3 4");
    EXPECT_EQ(Trace("a 1\n<other>\n# ${more}\nb y\n", templateText, values), "1 ? 3 4");
}

TEST(LineOrigin, FormerLineOfABlockStandsForTheTemplatesLine) {
    const std::string file =
        std::string(kNotice) + "a\n# --PRE-ZET-- b=old\n# ---ZET_BEGIN---\nb=new\n# ----ZET_END----\nc\n";
    EXPECT_EQ(Trace(file, "a\nb=${realm}\nc\n"), "- - - 1 2 - - - 3");
}

TEST(LineOrigin, AppendedBlockAndTheEmptyLineBeforeItAreNotTheTemplates) {
    const std::string file = std::string(kNotice) + "a\n\n# ---ZET_BEGIN---\nb\n# ----ZET_END----\n";
    EXPECT_EQ(Trace(file, "a\n"), "- - - 1 - - - -");
}

TEST(LineOrigin, PlaceholderBecomesAnything) {
    EXPECT_TRUE(CanBecome("x=${realm}", "x="));
    EXPECT_TRUE(CanBecome("x=${realm}", "x=a b"));
    EXPECT_TRUE(CanBecome("${a}.${b}=${a}", "one.two=one"));
    EXPECT_TRUE(CanBecome("x=${unknown}", "x=!{unknown}"));
    EXPECT_FALSE(CanBecome("x=${realm};", "x=EXAMPLE"));
    EXPECT_FALSE(CanBecome("x=${realm}", "y=EXAMPLE"));
    EXPECT_FALSE(CanBecome("${a}.${b}", "onetwo"));
}

TEST(LineOrigin, LiteralPartsDoNotOverlap) {
    EXPECT_FALSE(CanBecome("ab${x}ba", "aba"));
    EXPECT_FALSE(CanBecome("a${x}b${y}b", "ab"));
}

TEST(LineOrigin, CommentLineIsNotSubstituted) {
    EXPECT_TRUE(CanBecome("# ${realm}", "# ${realm}"));
    EXPECT_FALSE(CanBecome("# ${realm}", "# EXAMPLE"));
    EXPECT_TRUE(CanBecome("  # ${realm}", "  # EXAMPLE"));
}
