#include "OwnRegions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "ManagedText.h"
#include "zet/ZETFormat.h"

namespace ZET {
namespace {

OwnRegions InPieces(std::string_view text, std::size_t size) {
    OwnRegions regions;
    for (; !text.empty(); text.remove_prefix(std::min(size, text.size())))
        regions.Take(text.substr(0, size));
    regions.End();
    return regions;
}

OwnRegions AtOnce(std::string_view text) {
    return InPieces(text, text.size());
}

/// That it says what the whole view of the text says about the same question, whatever the pieces.
void ExpectSame(const std::string& text) {
    bool any = false;
    ManagedRegion open;
    const ManagedText view(text);
    for (const ManagedRegion& region : view.Regions()) {
        if (region.kind != RegionKind::Block && region.kind != RegionKind::Notice) continue;
        any = true;
        if (!region.isClosed && open.first == 0) open = region;
    }
    for (const std::size_t size : {text.size(), std::size_t{7}}) {
        const OwnRegions found = InPieces(text, size);
        EXPECT_EQ(found.Any(), any) << text;
        EXPECT_EQ(found.OpenLine(), open.first) << text;
        EXPECT_EQ(found.IsBlockOpen(), open.first != 0 && open.kind == RegionKind::Block) << text;
    }
}

TEST(OwnRegions, PlainTextHasNone) {
    EXPECT_FALSE(AtOnce("").Any());
    EXPECT_FALSE(AtOnce("a\n# b\n").Any());
    EXPECT_FALSE(AtOnce(std::string(" ") + ZETBeginMarker + "\n").Any());
}

TEST(OwnRegions, OpenBlockIsNamedByItsLine) {
    const OwnRegions found = AtOnce(std::string("a\n\n") + ZETBeginMarker + "\nb\n");
    EXPECT_TRUE(found.Any());
    EXPECT_EQ(found.OpenLine(), 3U);
    EXPECT_TRUE(found.IsBlockOpen());
}

TEST(OwnRegions, OpenNoticeIsNamedByItsLine) {
    const OwnRegions found = AtOnce(std::string(ZETNoticeMarker) + "\nb");
    EXPECT_EQ(found.OpenLine(), 1U);
    EXPECT_FALSE(found.IsBlockOpen());
}

TEST(OwnRegions, MarkerThatContinuesALongLineIsText) {
    EXPECT_FALSE(InPieces(std::string(100, 'x') + ZETBeginMarker + "\n", 100).Any());
    EXPECT_TRUE(InPieces(std::string(ZETBeginMarker) + std::string(200, 'x'), 50).Any());
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
