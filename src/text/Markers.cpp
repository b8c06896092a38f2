#include "text/Markers.h"

#include <array>
#include <cstddef>
#include <iterator>

#include "zet/ZETFormat.h"

namespace ZET::Text {

namespace {

constexpr std::string_view TextOf(Marker marker) {
    switch (marker) {
        case Marker::BlockBegin:
            return ZETBeginMarker;
        case Marker::BlockEnd:
            return ZETEndMarker;
        case Marker::FormerLine:
            return ZETFormerLinePrefix;
        case Marker::Notice:
            return ZETNoticeMarker;
        case Marker::TemplateComment:
            return ZETTemplateCommentMarker;
        case Marker::CommentEnd:
            return ZETCommentEndMarker;
        case Marker::None:
            break;
    }
    return "";
}

struct KnownMarker {
    Marker marker;
    std::string_view text;
};

constexpr std::array<KnownMarker, std::size(kMarkers)> KnownMarkers() {
    std::array<KnownMarker, std::size(kMarkers)> known = {};
    for (std::size_t i = 0; i < known.size(); ++i)
        known[i] = {kMarkers[i], TextOf(kMarkers[i])};
    return known;
}

constexpr std::array<KnownMarker, std::size(kMarkers)> kKnown = KnownMarkers();
/// The position at which most markers differ.
constexpr std::size_t kTelling = kMarkerStart.size() + 1;

}  // namespace

std::string_view MarkerText(Marker marker) {
    return TextOf(marker);
}

Marker MarkerOf(std::string_view line) {
    // Most lines are not comments at all.
    if (line.size() <= kTelling || !line.starts_with(kMarkerStart)) return Marker::None;
    for (const KnownMarker& known : kKnown) {
        if (line[kTelling] == known.text[kTelling] && line.starts_with(known.text)) return known.marker;
    }
    return Marker::None;
}

}  // namespace ZET::Text
