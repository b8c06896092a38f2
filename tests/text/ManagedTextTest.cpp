#include "text/ManagedText.h"

#include <gtest/gtest.h>

#include <string>

using ZET::Text::ManagedLine;
using ZET::Text::ManagedRegion;
using ZET::Text::ManagedText;
using ZET::Text::RegionKind;
using ZET::Text::RegionStep;

namespace {

/// The letters of a region's first line, of its content and of its last line.
const char* LettersOf(RegionKind kind) {
    switch (kind) {
        case RegionKind::Block:
            return "[b]";
        case RegionKind::Notice:
            return "<n>";
        case RegionKind::TemplateComment:
            return "(t)";
        default:
            return "???";
    }
}

char Letter(RegionKind kind, const ManagedLine& line) {
    if (line.IsContent()) return LettersOf(kind)[1];
    if (line.step == RegionStep::Begin) return LettersOf(kind)[0];
    if (line.step == RegionStep::End) return LettersOf(kind)[2];
    if (kind == RegionKind::Ordinary) return '.';
    return kind == RegionKind::FormerLine ? 'f' : '?';
}

/// One letter for each line.
std::string Kinds(const std::string& text) {
    const ManagedText managed(text);
    std::string kinds;
    for (std::size_t number = 1; number <= managed.LineCount(); ++number)
        kinds += Letter(managed.RegionOf(number).kind, managed.Line(number));
    return kinds;
}

constexpr char kEdited[] =
    "# --ZET_CONFIG_COMMENT--\n"
    "# a notice\n"
    "# --ZET_COMMENT_END--\n"
    "realms\n"
    "# --PRE-ZET-- kdc=old\n"
    "# ---ZET_BEGIN---\n"
    "kdc=new\n"
    "# ----ZET_END----\n"
    "more";

}  // namespace

TEST(ManagedText, EveryLineOfAnEditedFileHasItsKind) {
    EXPECT_EQ(Kinds(kEdited), "<n>.f[b].");
}

TEST(ManagedText, EmptyTextHasNoLinesAndNoRegions) {
    const ManagedText managed("");
    EXPECT_EQ(managed.LineCount(), 0U);
    EXPECT_TRUE(managed.Regions().empty());
}

TEST(ManagedText, LastLineWithoutLineFeedIsALine) {
    const ManagedText managed("a\nb");
    ASSERT_EQ(managed.LineCount(), 2U);
    EXPECT_EQ(managed.Line(2).text, "b");
}

TEST(ManagedText, EmptyLinesCountAndCarriageReturnsStay) {
    const ManagedText managed("\n\na\r\n");
    ASSERT_EQ(managed.LineCount(), 3U);
    EXPECT_EQ(managed.Line(2).text, "");
    EXPECT_EQ(managed.Line(3).text, "a\r");
}

TEST(ManagedText, MarkerCountsOnlyAtTheFirstByte) {
    EXPECT_EQ(Kinds(" # ---ZET_BEGIN---\nx\n# ----ZET_END----\n"), "...");
    EXPECT_EQ(Kinds("a # --PRE-ZET-- b\n"), ".");
}

TEST(ManagedText, RestOfAMarkerLineDoesNotMatter) {
    EXPECT_EQ(Kinds("# ---ZET_BEGIN---\r\nx\n# ----ZET_END---- and more\n"), "[b]");
}

TEST(ManagedText, FormerLineNeedsTheBlankOfItsPrefix) {
    EXPECT_EQ(Kinds("# --PRE-ZET--\n# --PRE-ZET-- \n"), ".f");
}

TEST(ManagedText, BlockWithoutEndReachesToTheEndOfTheText) {
    const ManagedText managed("a\n# ---ZET_BEGIN---\nx\ny\n");
    ASSERT_EQ(managed.Regions().size(), 2U);
    EXPECT_TRUE(managed.Regions()[0].isClosed);
    EXPECT_EQ(managed.Regions()[1].last, 4U);
    EXPECT_FALSE(managed.Regions()[1].isClosed);
}

TEST(ManagedText, NestedBeginIsContentAndTheFirstEndCloses) {
    const std::string text =
        "# ---ZET_BEGIN---\n# ---ZET_BEGIN---\nx\n# ----ZET_END----\ny\n# ----ZET_END----\n";
    EXPECT_EQ(Kinds(text), "[bb]..");
}

TEST(ManagedText, StrayEndMarkersAreOrdinaryLines) {
    EXPECT_EQ(Kinds("# ----ZET_END----\n# --ZET_COMMENT_END--\n"), "..");
}

TEST(ManagedText, BlocksAreTakenOutBeforeNotices) {
    // The notice's end stands inside the block and goes with it.
    const std::string text =
        "# --ZET_CONFIG_COMMENT--\n# ---ZET_BEGIN---\n# --ZET_COMMENT_END--\n# ----ZET_END----\na\n";
    EXPECT_EQ(Kinds(text), "<[b]n");
}

TEST(ManagedText, NoticeAroundABlockIsClosedOnBothSides) {
    const ManagedText managed(
        "# --ZET_CONFIG_COMMENT--\n# ---ZET_BEGIN---\nx\n# ----ZET_END----\n# --ZET_COMMENT_END--\n");
    ASSERT_EQ(managed.Regions().size(), 3U);
    for (const ManagedRegion& region : managed.Regions())
        EXPECT_TRUE(region.isClosed) << region.first;
}

TEST(ManagedText, TemplateCommentIsToldFromANotice) {
    EXPECT_EQ(Kinds("# --ZET_TEMPLATE_COMMENT--\nx\n# --ZET_COMMENT_END--\ny\n"), "(t).");
}

TEST(ManagedText, FormerLineAndItsBlockKnowEachOther) {
    const ManagedText managed(kEdited);
    EXPECT_EQ(managed.RegionOf(5).block, 6U);
    EXPECT_EQ(managed.RegionOf(7).formerLine, 5U);
    EXPECT_EQ(managed.FormerText(5), "kdc=old");
}

TEST(ManagedText, FormerLineWithoutABlockRightAfterItHasNone) {
    const ManagedText managed("# --PRE-ZET-- a\n\n# ---ZET_BEGIN---\nx\n# ----ZET_END----\n");
    EXPECT_EQ(managed.RegionOf(1).block, 0U);
    EXPECT_EQ(managed.RegionOf(4).formerLine, 0U);
}

TEST(ManagedText, OnlyTheLastOfTwoFormerLinesBelongsToTheBlock) {
    const ManagedText managed("# --PRE-ZET-- a\n# --PRE-ZET-- b\n# ---ZET_BEGIN---\nx\n# ----ZET_END----\n");
    EXPECT_EQ(managed.RegionOf(1).block, 0U);
    EXPECT_EQ(managed.RegionOf(2).block, 3U);
    EXPECT_EQ(managed.RegionOf(4).formerLine, 2U);
}

TEST(ManagedText, TwoBlocksInARowAreTwoRegions) {
    const std::string block = "# ---ZET_BEGIN---\nx\n# ----ZET_END----\n";
    const std::string text = block + block;
    const ManagedText managed(text);
    ASSERT_EQ(managed.Regions().size(), 2U);
    EXPECT_EQ(managed.Regions()[1].first, 4U);
}

TEST(ManagedText, RegionsCoverEveryLineOnce) {
    const ManagedText managed(kEdited);
    std::size_t next = 1;
    for (const ManagedRegion& region : managed.Regions()) {
        EXPECT_EQ(region.first, next);
        next = region.last + 1;
    }
    EXPECT_EQ(next, managed.LineCount() + 1);
}
