#ifndef ZET_SIGNALS_H
#define ZET_SIGNALS_H

#include <array>
#include <csignal>

#include "deploy/host/Failure.h"

namespace ZET::Deploy {

/// For as long as one lives, a signal that came is remembered, also where nobody waits for it any more.
class SignalMemory {
  public:
    SignalMemory();
    ~SignalMemory();
    SignalMemory(const SignalMemory&) = delete;
    SignalMemory& operator=(const SignalMemory&) = delete;
};

/// For as long as the object lives, SIGINT, SIGTERM and SIGHUP only set a flag, so that nothing temporary is
/// left behind. What ignored a signal goes on ignoring it. One that nobody answered with an `Interrupted`
/// comes again at the end of the outermost object, to whom it would have come without, unless a
/// `SignalMemory` lives on, whose owner asks for it.
class SignalGuard {
  public:
    SignalGuard();
    ~SignalGuard();
    SignalGuard(const SignalGuard&) = delete;
    SignalGuard& operator=(const SignalGuard&) = delete;

    /// Whether one of them came that is remembered.
    static bool Caught();

    /// Throws `Interrupted` when one of them came: between two steps of a command.
    static void Check();

  private:
    const SignalMemory m_memory;
    std::array<struct sigaction, 3> m_former{};
};

}  // namespace ZET::Deploy

#endif
