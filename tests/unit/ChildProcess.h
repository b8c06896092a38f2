#ifndef ZET_CHILD_PROCESS_H
#define ZET_CHILD_PROCESS_H

#include <chrono>
#include <functional>
#include <optional>

namespace ZET {

/// How a child's body ended when nothing failed in it but it could not be tried here.
inline constexpr int kNotPossible = 77;

/// What a child counts as having ended with when it did no work any more and waited.
inline constexpr int kStuck = 78;

/// Runs `body` in a child process, where it may end up endless, lose privileges or change limits. Test
/// failures in the child are shown and make it end with 1, exceptions with 2. Empty when it was still working
/// after `limit`, in its own time on a processor however busy the machine is, and was killed.
std::optional<int> ExitOfChild(std::chrono::milliseconds limit, const std::function<int()>& body);

/// Adds a failure unless `body` ends in time without one and without waiting for anything.
void ExpectChildPasses(std::chrono::milliseconds limit, const std::function<void()>& body);

/// Whether `body` is still working after this long.
bool StillRunsAfter(std::chrono::milliseconds time, const std::function<void()>& body);

}  // namespace ZET

#endif
