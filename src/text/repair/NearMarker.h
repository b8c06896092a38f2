#ifndef ZET_NEAR_MARKER_H
#define ZET_NEAR_MARKER_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "text/Markers.h"

namespace ZET::Text {

/// A line that a hand or an editor made of a marker line, and the line that it was made of.
struct NearMarker {
    Marker marker = Marker::None;
    std::string line;
};

/// Recognises a marker behind an indentation, another comment sign or none, other dashes or another number of
/// them, other letter case, or one wrong letter. Empty for a line that the module takes for a
/// marker, and for one that only mentions it.
std::optional<NearMarker> FindNearMarker(std::string_view line);

/// Whether there is nothing in it but blanks, dashes and comment signs, as a hand may leave them at a
/// marker.
bool IsOnlySurroundings(std::string_view text);

/// A marker behind other text, where the line feed between the two was lost.
struct GluedMarker {
    Marker marker = Marker::None;
    std::size_t position = 0;  ///< of its first byte, never 0
};

/// The first one behind which the line ends, blanks aside, or another marker or a kept former text stands.
std::optional<GluedMarker> FindGluedMarker(std::string_view line);

}  // namespace ZET::Text

#endif
