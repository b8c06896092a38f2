#ifndef ZET_TEST_EFFORT_H
#define ZET_TEST_EFFORT_H

#include <cstdint>
#include <functional>

namespace ZET::Growth {

/// What a call does, in counts that are the same each time.
struct Effort {
    std::uint64_t allocations = 0;
    std::uint64_t comparisons = 0;  ///< of bytes with others, as of two texts of the same length
    std::uint64_t steps = 0;        ///< of the database
};

Effort EffortOf(const std::function<void()>& call);

}  // namespace ZET::Growth

#endif
