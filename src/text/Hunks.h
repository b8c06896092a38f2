#ifndef ZET_HUNKS_H
#define ZET_HUNKS_H

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace ZET::Text {

/// Lines of an old text that are replaced by lines of a new one; numbers from 1.
struct Hunk {
    std::size_t oldFirst = 1;  ///< if there are none, the line before which the new ones are inserted
    std::size_t oldCount = 0;
    std::size_t newFirst = 1;  ///< if there are none, the line before which the old ones were
    std::size_t newCount = 0;
};

/// The hunks of a difference in the default format of `diff`: "12,15c12", "7a8,9", "3d2". None if it is not
/// one.
std::optional<std::vector<Hunk>> HunksOf(std::string_view difference);

/// The hunk whose head a line of a unified difference is: "@@ -12,4 +12 @@". None if it is no head.
std::optional<Hunk> UnifiedHunkOf(std::string_view line);

}  // namespace ZET::Text

#endif
