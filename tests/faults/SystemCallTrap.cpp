// The kernel hands each system call of the program to the signal handler in here instead of doing it,
// wherever it is made: in the C library, in the C++ library, in a module. The handler may not call any of
// them.
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "FaultPlan.h"
#include "FileCalls.h"

// From between these two labels, the kernel does system calls as ever.
extern "C" {
extern const char theFreeCodeBegin[];
extern const char theFreeCodeEnd[];
long MakeCall(long long number, long long a, long long b, long long c, long long d, long long e, long long f);
void ReturnFromSignal();
}

asm(R"(
    .text
theFreeCodeBegin:
    .type MakeCall, @function
MakeCall:
    mov %rdi, %rax
    mov %rsi, %rdi
    mov %rdx, %rsi
    mov %rcx, %rdx
    mov %r8, %r10
    mov %r9, %r8
    mov 8(%rsp), %r9
    syscall
    ret
    .type ReturnFromSignal, @function
ReturnFromSignal:
    mov $15, %eax
    syscall
    ud2
theFreeCodeEnd:
)");

namespace ZET::Faults {

namespace {

constexpr int kDispatch = 59;  // PR_SET_SYSCALL_USER_DISPATCH
constexpr int kDispatchOn = 1;
constexpr char kLetThrough = 0;
constexpr char kHandOver = 1;
constexpr unsigned long kOwnReturn = 0x04000000;  // SA_RESTORER
constexpr std::size_t kMaskSize = 8;              // of the kernel's set of signals

volatile char theSelector = kLetThrough;

struct KernelAction {
    void (*handler)(int, siginfo_t*, void*);
    unsigned long flags;
    void (*restorer)();
    std::uint64_t mask;
};

/// Until the driver answers, the run stands still. A driver that has gone stops nothing.
void HandOver(std::uint64_t turn, bool isDone) {
    const Message message = {turn, isDone ? 1U : 0U};
    char answer = 0;
    const auto transfer = [](long number, int descriptor, const void* bytes, std::size_t size) {
        while (MakeCall(number, descriptor, reinterpret_cast<long>(bytes), static_cast<long>(size), 0, 0,
                        0) == -EINTR) {
        }
    };
    transfer(SYS_write, theHook.toDriver, &message, sizeof message);
    transfer(SYS_read, theHook.fromDriver, &answer, 1);
}

void LetOthersAct(std::uint64_t turn) {
    if (thePlan.kind != Kind::Stop || turn < thePlan.turn) return;
    theLog->isMet = 1;
    HandOver(turn, false);
}

void LetDriverLook(const Call& call, std::uint64_t turn) {
    if (theHook.isWatched && MayChangeFiles(call)) HandOver(turn, true);
}

/// A path that the call names, or that of its descriptor.
void NotePath(const Call& call, LoggedCall& entry) {
    constexpr std::size_t kRoom = sizeof entry.path - 1;
    if (const char* path = PathOf(call); path != nullptr && *path != '\0') {
        std::strncpy(entry.path, path, kRoom);
    } else if (path != nullptr || TakesDescriptor(call)) {
        char link[32] = "/proc/self/fd/";
        char* end = link + std::strlen(link);
        const long long descriptor = call.arguments[0];
        long long divisor = 1;
        while (descriptor / divisor >= 10)
            divisor *= 10;
        for (; divisor > 0; divisor /= 10)
            *end++ = static_cast<char>('0' + descriptor / divisor % 10);
        MakeCall(SYS_readlinkat, AT_FDCWD, reinterpret_cast<long>(link), reinterpret_cast<long>(entry.path),
                 kRoom, 0, 0);
    }
}

std::uint64_t CountCall(const Call& call) {
    const std::uint64_t turn = ++theLog->calls;
    if (turn > Log::kMostCalls) return turn;
    LoggedCall& entry = theLog->entries[turn - 1];
    entry.number = static_cast<std::int32_t>(call.number);
    entry.flags = static_cast<std::int32_t>(OpenFlags(call));
    entry.allocations = theLog->allocations;
    // Of a run that meets a fault, nobody asks which files its calls are about: naming them is a fifth of its
    // time.
    if (thePlan.kind == Kind::None || thePlan.kind == Kind::Stop) NotePath(call, entry);
    return turn;
}

bool IsReadOfPipe(const Call& call) {
    struct stat status = {};
    return call.number == SYS_read && call.arguments[0] > STDERR_FILENO &&
           MakeCall(SYS_fstat, call.arguments[0], reinterpret_cast<long>(&status), 0, 0, 0, 0) == 0 &&
           S_ISFIFO(status.st_mode);
}

/// Reads until there is no room or no writer any more: how much is in a pipe at any time is chance, and a run
/// would make another number of calls each time.
long ReadWholly(const Call& call) {
    long size = 0;
    while (size < call.arguments[2]) {
        const long count = MakeCall(SYS_read, call.arguments[0], call.arguments[1] + size,
                                    call.arguments[2] - size, 0, 0, 0);
        if (count == -EINTR) continue;
        if (count <= 0) return size == 0 ? count : size;
        size += count;
    }
    return size;
}

long Make(const Call& call) {
    if (IsReadOfPipe(call)) return ReadWholly(call);
    const auto& a = call.arguments;
    return MakeCall(call.number, a[0], a[1], a[2], a[3], a[4], a[5]);
}

/// A descriptor is closed even if closing it fails.
long FailedCall(const Call& call, int error) {
    theLog->isMet = 1;
    if (call.number == SYS_close) Make(call);
    return -error;
}

long ShortenedCall(const Call& call) {
    theLog->isMet = 1;
    return Make(Shortened(call));
}

bool Exists(const char* path) {
    return MakeCall(SYS_faccessat, AT_FDCWD, reinterpret_cast<long>(path), F_OK, 0, 0, 0) == 0;
}

bool NeedsRoom(const Call& call) {
    if (CreatesFile(call)) return !Exists(PathOf(call));
    return WritesFile(call);
}

long OnFullDisk(const Call& call, bool isFirst) {
    if (!NeedsRoom(call)) return Make(call);
    return isFirst && CanBeShort(call) ? ShortenedCall(call) : FailedCall(call, ENOSPC);
}

long Faulted(const Call& call, std::uint64_t turn) {
    const bool isTurn = turn == thePlan.turn;
    const bool isPast = turn >= thePlan.turn;
    switch (thePlan.kind) {
        case Kind::Fail:
            return isTurn ? FailedCall(call, thePlan.error) : Make(call);
        case Kind::Dead:
            return isPast ? FailedCall(call, thePlan.error) : Make(call);
        case Kind::Full:
            return isPast ? OnFullDisk(call, isTurn) : Make(call);
        case Kind::Short:
            return isTurn && CanBeShort(call) ? ShortenedCall(call) : Make(call);
        case Kind::Kill:
            if (isTurn) {
                theLog->isMet = 1;
                MakeCall(SYS_kill, MakeCall(SYS_getpid, 0, 0, 0, 0, 0, 0), SIGKILL, 0, 0, 0, 0);
            }
            return Make(call);
        default:
            return Make(call);
    }
}

long CountedCall(const Call& call) {
    const std::uint64_t turn = CountCall(call);
    LetOthersAct(turn);
    const long result = Faulted(call, turn);
    LetDriverLook(call, turn);
    return result;
}

/// The handler has a set of blocked signals of its own; the change must reach the program's.
long ChangeMask(const Call& call, ucontext_t& context) {
    const long result = Make(call);
    MakeCall(SYS_rt_sigprocmask, SIG_BLOCK, 0, reinterpret_cast<long>(&context.uc_sigmask), kMaskSize, 0, 0);
    // Blocked by the handler, and by nobody else.
    reinterpret_cast<std::uint64_t&>(context.uc_sigmask) &= ~(std::uint64_t{1} << (SIGSYS - 1));
    return result;
}

/// Nobody else goes on meanwhile: who tries again after a fault may do so at once, and as often. A database
/// that is not granted a lock pauses for ten seconds in all: nine tenths of the time of faults.fail.
bool IsPause(const Call& call) {
    return call.number == SYS_nanosleep || call.number == SYS_clock_nanosleep;
}

void OnSystemCall(int /*signal*/, siginfo_t* /*info*/, void* data) {
    auto& context = *static_cast<ucontext_t*>(data);
    auto& registers = context.uc_mcontext.gregs;
    const Call call = {registers[REG_RAX],
                       {registers[REG_RDI], registers[REG_RSI], registers[REG_RDX], registers[REG_R10],
                        registers[REG_R8], registers[REG_R9]}};
    if (call.number == SYS_rt_sigprocmask) {
        registers[REG_RAX] = ChangeMask(call, context);
    } else if (IsPause(call)) {
        registers[REG_RAX] = 0;
    } else {
        registers[REG_RAX] = IsFileCall(call) ? CountedCall(call) : Make(call);
    }
}

bool Handle(int number) {
    const KernelAction action = {OnSystemCall, SA_SIGINFO | kOwnReturn, ReturnFromSignal, 0};
    return MakeCall(SYS_rt_sigaction, number, reinterpret_cast<long>(&action), 0, kMaskSize, 0, 0) == 0;
}

/// The making of a process counts as one call. Its inside is none of ours: the child starts in the middle.
template <typename Function, typename... Arguments>
int Spawn(Function* /*type*/, const char* name, Arguments... arguments) {
    const auto original = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
    if (theSelector == kLetThrough) return original(arguments...);
    const Call call = {SYS_vfork, {}};
    theSelector = kLetThrough;
    const std::uint64_t turn = CountCall(call);
    const bool fails = (thePlan.kind == Kind::Fail && turn == thePlan.turn) ||
                       (thePlan.kind == Kind::Dead && turn >= thePlan.turn);
    const bool isKilled = thePlan.kind == Kind::Kill && turn == thePlan.turn;
    if (fails || isKilled) theLog->isMet = 1;
    if (isKilled) raise(SIGKILL);
    LetOthersAct(turn);
    const int result = fails ? thePlan.error : original(arguments...);
    LetDriverLook(call, turn);
    theSelector = kHandOver;
    return result;
}

}  // namespace

bool TrapSystemCalls() {
    if (!Handle(SIGSYS)) return false;
    const auto begin = reinterpret_cast<unsigned long>(theFreeCodeBegin);
    const auto size = static_cast<unsigned long>(theFreeCodeEnd - theFreeCodeBegin);
    if (prctl(kDispatch, kDispatchOn, begin, size, &theSelector) != 0) return false;
    theSelector = kHandOver;
    return true;
}

}  // namespace ZET::Faults

extern "C" {

/// No thread is granted: the kernel would start it inside of the handler, and which of several makes a call
/// first is chance. What asked for them does their work itself.
__attribute__((visibility("default"))) int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                                                          void* (*function)(void*), void* argument) {
    if (ZET::Faults::theLog != nullptr) return EAGAIN;
    const auto original = reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
    return original(thread, attributes, function, argument);
}

__attribute__((visibility("default"))) int posix_spawnp(pid_t* child, const char* file,
                                                        const posix_spawn_file_actions_t* actions,
                                                        const posix_spawnattr_t* attributes,
                                                        char* const* arguments, char* const* environment) {
    return ZET::Faults::Spawn(&posix_spawnp, "posix_spawnp", child, file, actions, attributes, arguments,
                              environment);
}

__attribute__((visibility("default"))) int posix_spawn(pid_t* child, const char* path,
                                                       const posix_spawn_file_actions_t* actions,
                                                       const posix_spawnattr_t* attributes,
                                                       char* const* arguments, char* const* environment) {
    return ZET::Faults::Spawn(&posix_spawn, "posix_spawn", child, path, actions, attributes, arguments,
                              environment);
}
}
