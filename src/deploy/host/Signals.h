#ifndef ZET_SIGNALS_H
#define ZET_SIGNALS_H

#include <array>
#include <csignal>

#include "deploy/host/Failure.h"

namespace ZET::Deploy {

/// While one lives, a signal that was caught is remembered, even if no `SignalGuard` is left.
class SignalMemory {
  public:
    SignalMemory();
    ~SignalMemory();
    SignalMemory(const SignalMemory&) = delete;
    SignalMemory& operator=(const SignalMemory&) = delete;
};

/// While the object lives, SIGINT, SIGTERM and SIGHUP only set a flag, so that nothing temporary is left
/// behind. A signal that was ignored stays ignored. When the outermost object ends, a signal that no
/// `Interrupted` has reported is sent to the process again, unless a `SignalMemory` lives on, whose owner
/// asks for it.
class SignalGuard {
  public:
    SignalGuard();
    ~SignalGuard();
    SignalGuard(const SignalGuard&) = delete;
    SignalGuard& operator=(const SignalGuard&) = delete;

    /// Whether a signal was caught that is still remembered.
    static bool Caught();

    /// Throws `Interrupted` if a signal was caught. For use between two steps of a command.
    static void Check();

  private:
    const SignalMemory m_memory;
    std::array<struct sigaction, 3> m_former{};
};

}  // namespace ZET::Deploy

#endif
