#ifndef ZET_FAULTS_FAULT_PLAN_H
#define ZET_FAULTS_FAULT_PLAN_H

#include <cstdint>

namespace ZET::Faults {

/// What a run has to meet with. Turns count from 1, and begin with `main`.
enum class Kind {
    None,    ///< nothing: the calls are only counted
    Fail,    ///< one call fails
    Dead,    ///< from one call on, all fail
    Full,    ///< from one call on, whatever needs room fails; a write still places half of its bytes
    Short,   ///< one call reads or writes no more than half
    Kill,    ///< SIGKILL before one call
    Memory,  ///< one allocation fails
    Starve,  ///< from one allocation on, all fail
    Stop,    ///< before one call and each after it, somebody else may act
};

struct Plan {
    Kind kind = Kind::None;
    std::uint64_t turn = 0;
    int error = 0;  ///< for `Fail` and `Dead`
};

/// How the driver of the tests is told where the run has come to, and answers that it may go on: two
/// descriptors. Without a driver, both are -1.
struct Hook {
    int toDriver = -1;
    int fromDriver = -1;
    bool isWatched =
        false;  ///< whether the driver looks at the host after each call that may change something
};

/// What goes through the hook. The answer is one byte.
struct Message {
    std::uint64_t turn;
    std::uint64_t isDone;  ///< 0 before the call, 1 after it
};

/// One call, as the log has it.
struct LoggedCall {
    std::int32_t number;
    std::int32_t flags;         ///< of an open
    std::uint64_t allocations;  ///< before the call
    char path[240];             ///< "" when the call names none
};

/// A file that is mapped into the program, so that it holds what was counted even when the program is killed.
struct Log {
    static constexpr std::uint64_t kMostCalls = 4096;
    std::uint64_t calls;
    std::uint64_t allocations;
    std::uint64_t isMet;  ///< whether the fault came
    LoggedCall entries[kMostCalls];
};

/// Both are there from the start of `main` on; until then, and in a program without a plan, `theLog` is null.
extern Plan thePlan;
extern Hook theHook;
extern Log* theLog;

/// From here on, system calls are counted and faulted. False where the kernel cannot do that.
bool TrapSystemCalls();

}  // namespace ZET::Faults

#endif
