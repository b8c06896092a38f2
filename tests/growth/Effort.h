#ifndef ZET_TEST_EFFORT_H
#define ZET_TEST_EFFORT_H

#include <cstdint>
#include <functional>

namespace ZET::Growth {

/// The effort of a call, in counts that are the same each time.
struct Effort {
    std::uint64_t allocations = 0;
    std::uint64_t comparisons = 0;  ///< of bytes, for example of two texts of the same size
    std::uint64_t steps = 0;        ///< of the database
};

Effort EffortOf(const std::function<void()>& call);

}  // namespace ZET::Growth

#endif
