#ifndef ZET_FORMER_LINES_H
#define ZET_FORMER_LINES_H

#include <cstddef>
#include <string_view>
#include <vector>

namespace ZET::Text {

/// Maps lines of a new text to their numbers in the old one, by the unified diff of the two; 0 for a new
/// line. `lines` are numbers from 1 in ascending order.
std::vector<std::size_t> FormerLines(std::string_view diff, const std::vector<std::size_t>& lines);

}  // namespace ZET::Text

#endif
