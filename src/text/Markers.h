#ifndef ZET_MARKERS_H
#define ZET_MARKERS_H

#include <cstdint>
#include <string_view>

namespace ZET::Text {

/// The marker lines of the managed format.
enum class Marker : std::uint8_t {
    None,
    BlockBegin,
    BlockEnd,
    FormerLine,
    Notice,
    TemplateComment,
    CommentEnd
};

/// All markers but `None`.
inline constexpr Marker kMarkers[] = {Marker::BlockBegin, Marker::BlockEnd,        Marker::FormerLine,
                                      Marker::Notice,     Marker::TemplateComment, Marker::CommentEnd};

/// The common beginning of all markers.
inline constexpr std::string_view kMarkerStart = "# --";

std::string_view MarkerText(Marker marker);

/// The marker that a line begins with. A marker anywhere else in the line does not count; text after it does
/// not matter.
Marker MarkerOf(std::string_view line);

}  // namespace ZET::Text

#endif
