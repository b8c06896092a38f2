#ifndef ZET_NEAR_MARKER_H
#define ZET_NEAR_MARKER_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "text/Markers.h"

namespace ZET::Text {

/// A line that an edit turned into something close to a marker line, and the marker line that was meant.
struct NearMarker {
    Marker marker = Marker::None;
    std::string line;
};

/// Recognises a marker with an indentation, another or no comment sign, other dashes or another number of
/// them, another letter case, or one wrong letter. None for an exact marker line, and for a line that only
/// mentions a marker.
std::optional<NearMarker> FindNearMarker(std::string_view line);

/// Whether the text consists only of blanks, dashes and comment signs, which an edit by hand may leave next
/// to a marker.
bool IsOnlySurroundings(std::string_view text);

/// A marker after other text, because the line feed between them was lost.
struct GluedMarker {
    Marker marker = Marker::None;
    std::size_t position = 0;  ///< of its first byte; never 0
};

/// The first glued marker that is followed only by blanks, by another marker, or by a kept former text.
std::optional<GluedMarker> FindGluedMarker(std::string_view line);

}  // namespace ZET::Text

#endif
