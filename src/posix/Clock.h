#ifndef ZET_POSIX_CLOCK_H
#define ZET_POSIX_CLOCK_H

#include <cstdint>
#include <ctime>

namespace ZET {

/// In a second.
inline constexpr std::int64_t kNanoseconds = 1'000'000'000;

inline std::int64_t NanosecondsOf(const struct timespec& time) {
    return std::int64_t{time.tv_sec} * kNanoseconds + time.tv_nsec;
}

/// The time, in nanoseconds, of the clock that the times of files are taken from, which lags a little.
inline std::int64_t CoarseNow() {
    struct timespec now = {};
    clock_gettime(CLOCK_REALTIME_COARSE, &now);
    return NanosecondsOf(now);
}

}  // namespace ZET

#endif
