#ifndef ZET_PROCESS_H
#define ZET_PROCESS_H

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace ZET::Deploy {

/// How a program is run.
struct ProcessConditions {
    std::vector<std::string> environment{};  ///< added, or replacing parts of it, "NAME=VALUE" each
    std::string directory{};                 ///< where it starts; empty: the current directory
    std::chrono::seconds timeLimit{0};       ///< zero: none
    std::size_t keptOutput = 0;  ///< so many bytes of the output's begin and of its end; zero: all of it
};

struct ProcessResult {
    int status = 0;       ///< the exit status, or 128 plus the signal that ended it
    int signal = 0;       ///< the signal that ended it; zero: none
    bool isLate = false;  ///< it exceeded its time limit, and was ended
    std::string output;   ///< standard output and standard error, as they came
};

/// Runs a program without a shell until it ends. The first argument is its name, which is looked up in PATH.
/// Standard input is empty, no other file of this process is open in it, and no signal is ignored. The
/// program leads a process group of its own, which gets SIGTERM and then SIGKILL if it has to end early.
/// Processes that outlive the program, and may hold its output open, are not waited for. Throws a `Failure`
/// if the program cannot be started. A signal to this process ends the program and throws `Interrupted`.
ProcessResult RunProcess(const std::vector<std::string>& arguments, const ProcessConditions& conditions = {});

}  // namespace ZET::Deploy

#endif
