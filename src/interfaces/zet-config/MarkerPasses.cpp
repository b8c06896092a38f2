#include <algorithm>

#include "Passes.h"
#include "RegionTracker.h"
#include "zet/ZETFormat.h"

namespace ZET {

namespace {

/// The common beginning of both markers: lines without it are not markers.
std::string_view CommonBeginning(std::string_view one, std::string_view other) {
    const auto end = std::mismatch(one.begin(), one.end(), other.begin(), other.end()).first;
    return one.substr(0, static_cast<std::size_t>(end - one.begin()));
}

}  // namespace

void RemoveMarkersPass(TextReader& in, TextBuilder& out, const std::string& beginMarker,
                       const std::string& endMarker) {
    using Line = RegionTracker::Line;
    RegionTracker region(in, "RemoveMarkers", beginMarker, endMarker);
    const char* const textStart = in.Bytes().data();
    // A kept line takes along the line feed before it, not the one after it, so a text whose first line is
    // dropped begins with an empty line.
    const auto keep = [&](std::string_view lines) {
        const std::size_t lineFeedBefore = lines.data() == textStart ? 0 : 1;
        out.Copy({lines.data() - lineFeedBefore, lines.size() + lineFeedBefore});
    };
    const std::string_view common = CommonBeginning(beginMarker, endMarker);
    std::string_view line;
    for (;;) {
        const std::string_view lines = common.empty() ? std::string_view() : in.SkipLinesWithout(common);
        if (!lines.empty() && !region.IsInside()) keep(lines.substr(0, lines.size() - 1));
        if (!in.ReadLine(line)) break;
        const Line kind = region.Track(line);
        if (kind != Line::Begin && kind != Line::End && !region.IsInside()) keep(line);
    }
    if (in.EndedByEndOfText()) return;
    if (in.Bytes().ends_with('\n')) {
        out.Copy(in.Bytes().substr(in.Bytes().size() - 1));
    } else {
        out.Append("\n");
    }
}

void InsertHeaderPass(TextReader& in, TextBuilder& out, const std::string& header) {
    std::string_view line;
    do {
        if (!in.ReadLine(line)) return;
    } while (line.empty());
    if (line.find(ZETNoticeMarker) == std::string_view::npos) {
        out.AppendLine(ZETNoticeMarker);
        out.AppendLine(header);
        out.AppendLine(ZETCommentEndMarker);
    }
    out.CopyLine(line);
    out.Copy(in.Rest());
}

}  // namespace ZET
