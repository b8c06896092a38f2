#include "OwnRegions.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ManagedText.h"
#include "zet/ZETFormat.h"

namespace ZET {
namespace {

/// What the whole view of the text says about the same question.
OwnRegions FromManagedText(const std::string& bytes) {
    OwnRegions result;
    const ManagedText text(bytes);
    for (const ManagedRegion& region : text.Regions()) {
        if (region.kind != RegionKind::Block && region.kind != RegionKind::Notice) continue;
        result.any = true;
        if (region.isClosed || result.openLine != 0) continue;
        result.openLine = region.first;
        result.isBlockOpen = region.kind == RegionKind::Block;
    }
    return result;
}

void ExpectSame(const std::string& text) {
    const OwnRegions expected = FromManagedText(text);
    const OwnRegions found = FindOwnRegions(text);
    EXPECT_EQ(found.any, expected.any) << text;
    EXPECT_EQ(found.openLine, expected.openLine) << text;
    EXPECT_TRUE(expected.openLine == 0 || found.isBlockOpen == expected.isBlockOpen) << text;
}

TEST(OwnRegions, PlainTextHasNone) {
    EXPECT_FALSE(FindOwnRegions("").any);
    EXPECT_FALSE(FindOwnRegions("a\n# b\n").any);
    EXPECT_FALSE(FindOwnRegions(std::string(" ") + ZETBeginMarker + "\n").any);
}

TEST(OwnRegions, OpenBlockIsNamedByItsLine) {
    const OwnRegions found = FindOwnRegions(std::string("a\n\n") + ZETBeginMarker + "\nb\n");
    EXPECT_TRUE(found.any);
    EXPECT_EQ(found.openLine, 3U);
    EXPECT_TRUE(found.isBlockOpen);
}

TEST(OwnRegions, OpenNoticeIsNamedByItsLine) {
    const OwnRegions found = FindOwnRegions(std::string(ZETNoticeMarker) + "\nb");
    EXPECT_EQ(found.openLine, 1U);
    EXPECT_FALSE(found.isBlockOpen);
}

TEST(OwnRegions, EverySequenceOfMarkersIsSeenAsInTheWholeView) {
    const std::vector<std::string> lines = {ZETBeginMarker,      ZETEndMarker, ZETNoticeMarker,
                                            ZETCommentEndMarker, "text",       ZETTemplateCommentMarker};
    constexpr int kLength = 5;
    for (int code = 0; code < 6 * 6 * 6 * 6 * 6; ++code) {
        std::string text;
        for (int i = 0, rest = code; i < kLength; ++i, rest /= 6)
            text += lines[static_cast<std::size_t>(rest % 6)] + "\n";
        ExpectSame(text);
    }
}

}  // namespace
}  // namespace ZET
