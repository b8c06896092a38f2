#include "OwnRegions.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "ManagedText.h"
#include "zet/ZETFormat.h"

namespace ZET {
namespace {

OwnRegions Of(std::string_view text) {
    OwnRegions regions;
    for (const TextLine& line : SplitLines(text))
        regions.Take(line.text);
    return regions;
}

/// That it says what the whole view of the text says about the same question.
void ExpectSame(const std::string& text) {
    bool any = false;
    ManagedRegion open;
    const ManagedText view(text);
    for (const ManagedRegion& region : view.Regions()) {
        if (region.kind != RegionKind::Block && region.kind != RegionKind::Notice) continue;
        any = true;
        if (!region.isClosed && open.first == 0) open = region;
    }
    const OwnRegions found = Of(text);
    EXPECT_EQ(found.Any(), any) << text;
    EXPECT_EQ(found.OpenLine(), open.first) << text;
    EXPECT_EQ(found.IsBlockOpen(), open.first != 0 && open.kind == RegionKind::Block) << text;
}

TEST(OwnRegions, PlainTextHasNone) {
    EXPECT_FALSE(Of("").Any());
    EXPECT_FALSE(Of("a\n# b\n").Any());
    EXPECT_FALSE(Of(std::string(" ") + ZETBeginMarker + "\n").Any());
}

TEST(OwnRegions, OpenBlockIsNamedByItsLine) {
    const OwnRegions found = Of(std::string("a\n\n") + ZETBeginMarker + "\nb\n");
    EXPECT_TRUE(found.Any());
    EXPECT_EQ(found.OpenLine(), 3U);
    EXPECT_TRUE(found.IsBlockOpen());
}

TEST(OwnRegions, OpenNoticeIsNamedByItsLine) {
    const OwnRegions found = Of(std::string(ZETNoticeMarker) + "\nb");
    EXPECT_EQ(found.OpenLine(), 1U);
    EXPECT_FALSE(found.IsBlockOpen());
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
