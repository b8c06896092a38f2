#ifndef ZET_CHILD_PROCESS_H
#define ZET_CHILD_PROCESS_H

#include <chrono>
#include <functional>
#include <optional>

namespace ZET {

/// How a child's body ended when nothing failed in it but it could not be tried here.
inline constexpr int kNotPossible = 77;

/// Runs `body` in a child process, where it may end up endless, lose privileges or change limits. Test
/// failures in the child are shown and make it end with 1, exceptions with 2. Empty when it was still running
/// after `limit` and was killed.
std::optional<int> ExitOfChild(std::chrono::milliseconds limit, const std::function<int()>& body);

/// Adds a failure unless `body` ends in time without one.
void ExpectChildPasses(std::chrono::milliseconds limit, const std::function<void()>& body);

/// Whether `body` is still running after this long.
bool StillRunsAfter(std::chrono::milliseconds time, const std::function<void()>& body);

}  // namespace ZET

#endif
