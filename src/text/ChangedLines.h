#ifndef ZET_CHANGED_LINES_H
#define ZET_CHANGED_LINES_H

#include <string>
#include <string_view>

namespace ZET::Text {

/// Names the lines that a unified diff changes, by their numbers in the new text: "lines 3-5, 9 changed"; or,
/// for lines that are only removed, in the old one: "line 7 of the old text removed". Empty if there are
/// none.
std::string ChangedLines(std::string_view diff);

}  // namespace ZET::Text

#endif
