#include "text/Markers.h"

#include <algorithm>
#include <iterator>

#include "zet/ZETFormat.h"

namespace ZET {

std::string_view MarkerText(Marker marker) {
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

Marker MarkerOf(std::string_view line) {
    // Most lines are no comment at all.
    if (!line.starts_with(kMarkerStart)) return Marker::None;
    const auto* found = std::find_if(std::begin(kMarkers), std::end(kMarkers),
                                     [&](Marker marker) { return line.starts_with(MarkerText(marker)); });
    return found == std::end(kMarkers) ? Marker::None : *found;
}

}  // namespace ZET
