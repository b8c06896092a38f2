#ifndef ZET_HUNKS_H
#define ZET_HUNKS_H

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace ZET::Text {

/// Lines of an old text that others of a new one replace; numbers from 1.
struct Hunk {
    std::size_t oldFirst = 1;  ///< where there are none, the line before which the new ones come
    std::size_t oldCount = 0;
    std::size_t newFirst = 1;  ///< likewise
    std::size_t newCount = 0;
};

/// The hunks of a difference as `diff` writes it unless told otherwise: "12,15c12", "7a8,9", "3d2". None when
/// it is none.
std::optional<std::vector<Hunk>> HunksOf(std::string_view difference);

/// The hunk that a line of a unified difference begins: "@@ -12,4 +12 @@". None when it begins none.
std::optional<Hunk> UnifiedHunkOf(std::string_view line);

}  // namespace ZET::Text

#endif
