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

/// Where another region of the kind begins inside the region, or 0. A block may part a notice in two.
std::size_t NextBegin(const ManagedText& view, const ManagedRegion& region) {
    const bool isBlock = region.kind == RegionKind::Block;
    const Marker begin = isBlock ? Marker::BlockBegin : Marker::Notice;
    const LineKind content = isBlock ? LineKind::BlockContent : LineKind::NoticeText;
    const LineKind end = isBlock ? LineKind::BlockEnd : LineKind::NoticeEnd;
    for (std::size_t number = region.first; view.Line(number).kind != end; ++number) {
        const ManagedLine& line = view.Line(number);
        if (line.kind == content && MarkerOf(line.text) == begin) return number;
    }
    return 0;
}

/// What the whole view of the text says of the first region of a kind that lost its end.
std::string LostEndIn(const ManagedText& view, RegionKind kind, const std::string& name) {
    for (const ManagedRegion& region : view.Regions()) {
        if (region.kind != kind) continue;
        const std::size_t next = region.isClosed ? NextBegin(view, region) : 0;
        if (!region.isClosed || next != 0) return LostEndOf(name, region.first, next);
    }
    return "";
}

/// That it says what the whole view of the text says about the same question.
void ExpectSame(const std::string& text) {
    const ManagedText view(text);
    bool any = false;
    for (const ManagedRegion& region : view.Regions())
        any = any || region.kind == RegionKind::Block || region.kind == RegionKind::Notice;
    const std::string lostBlockEnd = LostEndIn(view, RegionKind::Block, "managed block");
    const OwnRegions found = Of(text);
    EXPECT_EQ(found.Any(), any) << text;
    EXPECT_EQ(found.LostEnd(),
              lostBlockEnd.empty() ? LostEndIn(view, RegionKind::Notice, "notice") : lostBlockEnd)
        << text;
}

TEST(OwnRegions, PlainTextHasNone) {
    EXPECT_FALSE(Of("").Any());
    EXPECT_FALSE(Of("a\n# b\n").Any());
    EXPECT_FALSE(Of(std::string(" ") + ZETBeginMarker + "\n").Any());
}

TEST(OwnRegions, OpenBlockIsNamedByItsLine) {
    const OwnRegions found = Of(std::string("a\n\n") + ZETBeginMarker + "\nb\n");
    EXPECT_TRUE(found.Any());
    EXPECT_EQ(found.LostEnd(),
              "the managed block that begins in line 3 has no end, and all that follows would be dropped "
              "(\"doctor\" tells a repair)");
}

TEST(OwnRegions, OpenNoticeIsNamedByItsLine) {
    EXPECT_EQ(Of(std::string(ZETNoticeMarker) + "\nb").LostEnd(),
              "the notice that begins in line 1 has no end, and all that follows would be dropped "
              "(\"doctor\" tells a repair)");
}

TEST(OwnRegions, BlockThatRunsIntoTheNextIsNamedByBothLines) {
    const std::string begin = std::string(ZETBeginMarker) + "\n";
    EXPECT_EQ(Of(begin + "a\nb\n" + begin + "c\n" + ZETEndMarker).LostEnd(),
              "the managed block that begins in line 1 has no end before the next begins in line 4, and all "
              "up to the end of that one would be dropped (\"doctor\" tells a repair)");
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
