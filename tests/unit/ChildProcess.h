#ifndef ZET_CHILD_PROCESS_H
#define ZET_CHILD_PROCESS_H

#include <chrono>
#include <functional>
#include <optional>

namespace ZET {

/// The exit status of a child whose body could not be tested here, although nothing failed.
inline constexpr int kNotPossible = 77;

/// The exit status reported for a child that waited instead of working.
inline constexpr int kStuck = 78;

/// Runs `body` in a child process, where it may run forever, lose privileges or change limits. Failures in
/// the child are shown and make it end with 1, exceptions with 2. Empty if it was still working after `limit`
/// of its own processor time, however busy the machine is, and was killed.
std::optional<int> ExitOfChild(std::chrono::milliseconds limit, const std::function<int()>& body);

/// Adds a failure unless `body` ends in time, without a failure and without waiting for anything.
void ExpectChildPasses(std::chrono::milliseconds limit, const std::function<void()>& body);

/// Whether `body` is still working after this long.
bool StillRunsAfter(std::chrono::milliseconds time, const std::function<void()>& body);

}  // namespace ZET

#endif
