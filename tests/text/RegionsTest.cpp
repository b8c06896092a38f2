#include "text/Regions.h"

#include <gtest/gtest.h>

#include <string>

#include "text/Lines.h"

namespace ZET::Text {
namespace {

constexpr char kBegin[] = "# ---ZET_BEGIN---\n";
constexpr char kEnd[] = "# ----ZET_END----\n";
constexpr char kNotice[] = "# --ZET_CONFIG_COMMENT--\n";
constexpr char kComment[] = "# --ZET_TEMPLATE_COMMENT--\n";
constexpr char kCommentEnd[] = "# --ZET_COMMENT_END--\n";

template <typename... Lines>
std::string Text(const Lines&... lines) {
    return (std::string() + ... + lines);
}

char Letter(RegionStep step) {
    return ".?[i!]"[static_cast<int>(step)];
}

/// One letter for each line.
std::string Steps(RegionFollower follower, const std::string& text) {
    std::string steps;
    for (const TextLine& line : SplitLines(text))
        steps += Letter(follower.Take(MarkerOf(line.text)));
    return steps;
}

/// The same of all kinds, with the kind's letter before that of what is in a region.
std::string Places(const std::string& text) {
    Regions regions;
    std::string places;
    std::size_t number = 0;
    for (const TextLine& line : SplitLines(text)) {
        const RegionPlace place = regions.Take(MarkerOf(line.text), ++number);
        places += (places.empty() ? "" : " ") + std::string(1, " fbnt"[static_cast<int>(place.kind)]);
        places += Letter(place.step);
    }
    return places;
}

TEST(Regions, RegionReachesFromItsBeginToTheNextEnd) {
    EXPECT_EQ(Steps(RegionFollower::OfBlocks(), Text("a\n", kBegin, "b\n", kEnd, "c\n")), ".[i].");
}

TEST(Regions, SecondBeginGoesOnWithTheRegion) {
    EXPECT_EQ(Steps(RegionFollower::OfBlocks(), Text(kBegin, kBegin, "a\n", kEnd, kEnd)), "[!i]?");
}

TEST(Regions, MarkersOfOtherKindsAreOrdinaryLines) {
    EXPECT_EQ(Steps(RegionFollower::OfNotices(), Text(kComment, kNotice, kBegin, kComment, kCommentEnd)),
              ".[ii]");
    EXPECT_EQ(Steps(RegionFollower::OfComments(), Text(kComment, kNotice, kBegin, kCommentEnd)), "[!i]");
}

TEST(Regions, OpenRegionKnowsItsBegin) {
    RegionFollower follower = RegionFollower::OfComments();
    EXPECT_EQ(follower.OpenedAt(), 0u);
    follower.Take(Marker::TemplateComment, 4);
    follower.Take(Marker::Notice, 5);
    EXPECT_EQ(follower.Opener(), Marker::TemplateComment);
    EXPECT_EQ(follower.OpenedAt(), 4u);
    follower.Take(Marker::CommentEnd, 6);
    EXPECT_EQ(follower.Opener(), Marker::None);
    EXPECT_EQ(follower.OpenedAt(), 0u);
}

TEST(Regions, BlocksComeBeforeNoticesAndTheseBeforeTemplateComments) {
    EXPECT_EQ(Places(Text(kNotice, kBegin, kCommentEnd, kEnd, "a\n", kCommentEnd)), "n[ b[ bi b] ni n]");
    EXPECT_EQ(Places(Text(kComment, kNotice, "a\n", kCommentEnd, "b\n", kCommentEnd)), "t[ n[ ni n] ti t]");
}

TEST(Regions, FormerLineIsOneOutsideOfRegionsOnly) {
    EXPECT_EQ(Places(Text("# --PRE-ZET-- a\n", kBegin, "# --PRE-ZET-- a\n", kEnd)), "f. b[ bi b]");
}

TEST(Regions, RegionWithoutEndIsOpenSinceItsBegin) {
    Regions regions;
    regions.Take(Marker::None, 1);
    regions.Take(Marker::Notice, 2);
    regions.Take(Marker::BlockBegin, 3);
    regions.Take(Marker::BlockEnd, 4);
    EXPECT_EQ(regions.OpenSince(RegionKind::Notice), 2u);
    EXPECT_EQ(regions.OpenSince(RegionKind::Block), 0u);
    EXPECT_EQ(regions.OpenSince(RegionKind::Ordinary), 0u);
}

}  // namespace
}  // namespace ZET::Text
