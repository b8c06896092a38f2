#ifndef ZET_MARKERS_H
#define ZET_MARKERS_H

#include <string_view>
#include <vector>

namespace ZET {

/// The marker lines of the managed format.
enum class Marker { None, BlockBegin, BlockEnd, FormerLine, Notice, TemplateComment, CommentEnd };

/// All of them but `None`.
inline constexpr Marker kMarkers[] = {Marker::BlockBegin, Marker::BlockEnd,        Marker::FormerLine,
                                      Marker::Notice,     Marker::TemplateComment, Marker::CommentEnd};

/// What all of them begin with.
inline constexpr std::string_view kMarkerStart = "# --";

std::string_view MarkerText(Marker marker);

/// The marker that a line begins with. One that stands anywhere else in it does not count, and what follows
/// it does not matter.
Marker MarkerOf(std::string_view line);

struct TextLine {
    std::string_view text;    ///< without the line feed
    bool hasLineFeed = true;  ///< false at most for the last line
};

/// The lines of a text, which must outlive them.
std::vector<TextLine> SplitLines(std::string_view text);

}  // namespace ZET

#endif
