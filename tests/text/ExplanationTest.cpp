#include "text/Explanation.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

using ZET::Text::ExplainedLines;
using ZET::Text::ManagedText;
using ZET::Text::TextExplanation;
using Kind = ZET::Text::ExplainedLines::Kind;

namespace {

constexpr char kMade[] =
    "# --ZET_CONFIG_COMMENT--\n"
    "# --ZET_COMMENT_END--\n"
    "a\n"
    "b\n"
    "x=EXAMPLE\n"
    "c\n";
constexpr char kTemplate[] = "a\nb\nx=${realm}\nc\n";

std::vector<ExplainedLines> ExplainText(const ManagedText& text, bool isMade, const char* templateText) {
    std::vector<ExplainedLines> all;
    TextExplanation(text, isMade, templateText).ForEach([&](const ExplainedLines& lines) {
        all.push_back(lines);
    });
    return all;
}

const ExplainedLines& ExplanationOf(const std::vector<ExplainedLines>& all, std::size_t line) {
    for (const ExplainedLines& lines : all)
        if (lines.first <= line && line <= lines.last) return lines;
    throw std::out_of_range("no explanation of line " + std::to_string(line));
}

}  // namespace

TEST(FileExplanation, EveryLineIsExplainedOnce) {
    const ManagedText text(kMade);
    std::size_t next = 1;
    for (const ExplainedLines& lines : ExplainText(text, true, kTemplate)) {
        EXPECT_EQ(lines.first, next);
        next = lines.last + 1;
    }
    EXPECT_EQ(next, text.LineCount() + 1);
}

TEST(FileExplanation, LinesWithoutPlaceholdersAreExplainedTogether) {
    const ManagedText text(kMade);
    const std::vector<ExplainedLines> explanation = ExplainText(text, true, kTemplate);
    ASSERT_EQ(explanation.size(), 4U);
    EXPECT_EQ(explanation[1].kind, Kind::FromTemplate);
    EXPECT_EQ(explanation[1].last, 4U);
    EXPECT_EQ(explanation[2].placeholders, std::vector<std::string>({"${realm}"}));
    EXPECT_EQ(explanation[2].templateLine, 3U);
}

TEST(FileExplanation, OneLineOfSeveralHasItsOwnTemplateLine) {
    const ManagedText text(kMade);
    const ExplainedLines line = TextExplanation(text, true, kTemplate).Of(4);
    EXPECT_EQ(line.first, 4U);
    EXPECT_EQ(line.last, 4U);
    EXPECT_EQ(line.templateLine, 2U);
}

TEST(FileExplanation, LinesOfAFileThatWasNotMadeAreTheAdministrators) {
    const ManagedText text("a\nb\n");
    const std::vector<ExplainedLines> explanation = ExplainText(text, false, "");
    ASSERT_EQ(explanation.size(), 1U);
    EXPECT_EQ(explanation[0].kind, Kind::Own);
    EXPECT_EQ(explanation[0].last, 2U);
}

TEST(FileExplanation, BlockTellsItsContentAndWhatStoodThere) {
    const ManagedText text("# --PRE-ZET-- old\n# ---ZET_BEGIN---\nnew\n# ----ZET_END----\n");
    const ExplainedLines block = TextExplanation(text, false, "").Of(3);
    EXPECT_EQ(block.kind, Kind::Block);
    EXPECT_EQ(block.first, 2U);
    EXPECT_EQ(block.last, 4U);
    EXPECT_EQ(block.content, std::vector<std::string_view>({"new"}));
    EXPECT_EQ(block.formerText, "old");
    EXPECT_EQ(block.formerLine, 1U);
}

TEST(FileExplanation, EmptyLineBeforeAnAppendedBlockCameWithIt) {
    const ManagedText text("a\n\n# ---ZET_BEGIN---\nx\n# ----ZET_END----\n");
    const TextExplanation explanation(text, false, "");
    EXPECT_EQ(explanation.Of(2).kind, Kind::Gap);
    EXPECT_EQ(explanation.Of(4).formerLine, 0U);
}

TEST(FileExplanation, FormerLineKnowsWhetherItsBlockIsThere) {
    const ManagedText text("# --PRE-ZET-- a\n# --PRE-ZET-- b\n# ---ZET_BEGIN---\nx\n# ----ZET_END----\n");
    const std::vector<ExplainedLines> explanation = ExplainText(text, false, "");
    EXPECT_EQ(ExplanationOf(explanation, 1).kind, Kind::LoneFormerLine);
    EXPECT_EQ(ExplanationOf(explanation, 2).kind, Kind::FormerLine);
    EXPECT_EQ(ExplanationOf(explanation, 2).block, 3U);
}

TEST(FileExplanation, BlockInAMadeFileNamesTheTemplateLineThatItReplaced) {
    const ManagedText text(
        "# --ZET_CONFIG_COMMENT--\n# --ZET_COMMENT_END--\na\n"
        "# --PRE-ZET-- x=EXAMPLE\n# ---ZET_BEGIN---\nx=OTHER\n# ----ZET_END----\n");
    const std::vector<ExplainedLines> explanation = ExplainText(text, true, "a\nx=${realm}\n");
    EXPECT_EQ(ExplanationOf(explanation, 6).templateLine, 2U);
    EXPECT_EQ(ExplanationOf(explanation, 4).placeholders, std::vector<std::string>({"${realm}"}));
}

TEST(FileExplanation, LinesThatCannotBeTracedAreSaidToBe) {
    const ManagedText text("# --ZET_CONFIG_COMMENT--\n# --ZET_COMMENT_END--\na\nmine\nother\nc\n");
    const std::vector<ExplainedLines> explanation = ExplainText(text, true, "a\nb\nc\n");
    EXPECT_EQ(ExplanationOf(explanation, 4).kind, Kind::Untraced);
    EXPECT_EQ(ExplanationOf(explanation, 5).templateLine, 0U);
    EXPECT_EQ(ExplanationOf(explanation, 6).templateLine, 3U);
}

TEST(FileExplanation, ChangedLineIsInThePlaceOfTheTemplatesLine) {
    const ManagedText text("# --ZET_CONFIG_COMMENT--\n# --ZET_COMMENT_END--\na\nother\n");
    const std::vector<ExplainedLines> explanation = ExplainText(text, true, "a\nb\n");
    const ExplainedLines& line = ExplanationOf(explanation, 4);
    EXPECT_EQ(line.kind, Kind::Differing);
    EXPECT_EQ(line.templateLine, 2U);
}
