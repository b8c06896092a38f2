#ifndef ZET_FAULTS_FAULT_PLAN_H
#define ZET_FAULTS_FAULT_PLAN_H

#include <cstdint>

namespace ZET::Faults {

/// The fault that a run meets. Turns count from 1, beginning with `main`.
enum class Kind {
    None,    ///< nothing: the calls are only counted
    Fail,    ///< one call fails
    Dead,    ///< from one call on, all fail
    Full,    ///< from one call on, all that need room fail; a write still writes half of its bytes
    Short,   ///< one call reads or writes no more than half
    Kill,    ///< SIGKILL before one call
    Memory,  ///< one allocation fails
    Starve,  ///< from one allocation on, all fail
    Stop,    ///< before one call and each later one, another program may act
};

struct Plan {
    Kind kind = Kind::None;
    std::uint64_t turn = 0;
    int error = 0;  ///< for `Fail` and `Dead`
};

/// Two descriptors, by which the run reports its progress to the driver of the tests and waits for permission
/// to go on. Without a driver, both are -1.
struct Hook {
    int toDriver = -1;
    int fromDriver = -1;
    bool isWatched =
        false;  ///< whether the driver looks at the host after each call that may change something
};

/// A message to the driver. The answer is one byte.
struct Message {
    std::uint64_t turn;
    std::uint64_t isDone;  ///< 0 before the call, 1 after it
};

/// One call in the log.
struct LoggedCall {
    std::int32_t number;
    std::int32_t flags;         ///< of an open
    std::uint64_t allocations;  ///< how many there were before the call
    char path[240];             ///< "" if the call names none
};

/// A file that is mapped into the program, so that the counts survive even if the program is killed.
struct Log {
    static constexpr std::uint64_t kMostCalls = 4096;
    std::uint64_t calls;
    std::uint64_t allocations;
    std::uint64_t isMet;  ///< whether the fault came
    LoggedCall entries[kMostCalls];
};

/// Both are set from the start of `main` on; until then, and in a program without a plan, `theLog` is null.
extern Plan thePlan;
extern Hook theHook;
extern Log* theLog;

/// Counts system calls from now on and makes them fail. False if the kernel does not support that.
bool TrapSystemCalls();

}  // namespace ZET::Faults

#endif
