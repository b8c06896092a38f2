// Preloaded into a command (LD_PRELOAD), this library makes it meet one fault. Environment variables say
// which: ZET_FAULT is "KIND TURN ERROR" with a kind as below, and ZET_FAULT_LOG names the file that receives
// the counts. With ZET_FAULT_HOOK, "DESCRIPTOR DESCRIPTOR WATCHED", the run stops to let its driver act or
// look. Programs that the command starts are not affected.
#include "FaultPlan.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

namespace ZET::Faults {

Plan thePlan;
Hook theHook;
Log* theLog = nullptr;

namespace {

constexpr int kCannotInject = 99;  // the exit status that the driver knows

using Main = int(int, char**, char**);
Main* theMain = nullptr;

[[noreturn]] void GiveUp(const char* what) {
    std::fprintf(stderr, "fault injector: %s\n", what);
    _exit(kCannotInject);
}

Kind KindOf(const char* name) {
    constexpr const char* kNames[] = {"none", "fail",   "dead",   "full", "short",
                                      "kill", "memory", "starve", "stop"};
    for (int kind = 0; const char* each : kNames) {
        if (std::strcmp(each, name) == 0) return static_cast<Kind>(kind);
        ++kind;
    }
    GiveUp("ZET_FAULT names no kind of fault");
}

Plan ReadPlan(const char* text) {
    char name[16] = "";
    unsigned long turn = 0;
    int error = 0;
    if (std::sscanf(text, "%15s %lu %d", name, &turn, &error) < 1) GiveUp("ZET_FAULT is empty");
    return {KindOf(name), turn, error};
}

Hook ReadHook(const char* text) {
    Hook hook;
    int isWatched = 0;
    if (text == nullptr) return hook;
    if (std::sscanf(text, "%d %d %d", &hook.toDriver, &hook.fromDriver, &isWatched) != 3)
        GiveUp("ZET_FAULT_HOOK is no \"DESCRIPTOR DESCRIPTOR WATCHED\"");
    for (const int descriptor : {hook.toDriver, hook.fromDriver}) {
        if (fcntl(descriptor, F_SETFD, FD_CLOEXEC) != 0) GiveUp("ZET_FAULT_HOOK names no open descriptor");
    }
    hook.isWatched = isWatched != 0;
    return hook;
}

Log* OpenLog(const char* path) {
    const int file = path != nullptr ? open(path, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600) : -1;
    void* memory = MAP_FAILED;
    if (file >= 0 && ftruncate(file, sizeof(Log)) == 0)
        memory = mmap(nullptr, sizeof(Log), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (memory == MAP_FAILED) GiveUp("ZET_FAULT_LOG names no file that can be written");
    close(file);
    return static_cast<Log*>(memory);
}

/// Calls are let alone by a run that meets allocations: trapping them is half of its time.
bool MeetsCalls(const Plan& plan) {
    return plan.kind != Kind::Memory && plan.kind != Kind::Starve;
}

int FaultedMain(int count, char** arguments, char** environment) {
    const Plan plan = ReadPlan(std::getenv("ZET_FAULT"));
    Log* log = OpenLog(std::getenv("ZET_FAULT_LOG"));
    const Hook hook = ReadHook(std::getenv("ZET_FAULT_HOOK"));
    for (const char* name : {"ZET_FAULT", "ZET_FAULT_LOG", "ZET_FAULT_HOOK", "LD_PRELOAD"})
        unsetenv(name);
    thePlan = plan;
    theHook = hook;
    theLog = log;
    if (MeetsCalls(plan) && !TrapSystemCalls())
        GiveUp("this kernel cannot hand system calls to their program");
    return theMain(count, arguments, environment);
}

}  // namespace

}  // namespace ZET::Faults

/// The C library's way into `main`.
extern "C" __attribute__((visibility("default"))) int __libc_start_main(  // NOLINT
    ZET::Faults::Main* main, int count, char** arguments, void (*init)(), void (*done)(),
    void (*loaderDone)(), void* stack) {
    const auto original =
        reinterpret_cast<decltype(&__libc_start_main)>(dlsym(RTLD_NEXT, "__libc_start_main"));
    ZET::Faults::theMain = main;
    const bool isFaulted = std::getenv("ZET_FAULT") != nullptr;
    return original(isFaulted ? ZET::Faults::FaultedMain : main, count, arguments, init, done, loaderDone,
                    stack);
}
