#ifndef ZET_OWN_REGIONS_H
#define ZET_OWN_REGIONS_H

#include <cstddef>
#include <string_view>

namespace ZET {

/// What there is to strip in a text: managed blocks, and notices outside of them.
struct OwnRegions {
    bool any = false;
    std::size_t openLine = 0;  ///< where the first region without an end begins, or 0
    bool isBlockOpen = false;
};

/// Of one that would take `ManagedText` apart line by line only this is wanted; it costs a scan and no
/// memory.
OwnRegions FindOwnRegions(std::string_view text);

}  // namespace ZET

#endif
