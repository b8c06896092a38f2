#ifndef ZET_PROCESS_H
#define ZET_PROCESS_H

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace ZET::Deploy {

/// How a program is run.
struct ProcessConditions {
    std::vector<std::string> environment{};  ///< more of it, or in place of parts of it, "NAME=VALUE" each
    std::string directory{};                 ///< where it starts; empty: where this process is
    std::chrono::seconds timeLimit{0};       ///< zero: it may take as long as it takes
    std::size_t keptOutput = 0;  ///< so many bytes of the output's begin and of its end; zero: all of it
};

struct ProcessResult {
    int status = 0;       ///< the exit status; 128 and the number of the signal that ended it
    int signal = 0;       ///< the signal that ended it; zero: it ended by itself
    bool isLate = false;  ///< it took longer than it may, and was ended
    std::string output;   ///< standard output and standard error, as they came
};

/// Runs a program to its end, without a shell: its name (looked up in PATH) and its arguments. Standard input
/// is empty, no other file of this process is open in it, and no signal is ignored. It leads a process group
/// of its own, which gets SIGTERM and then SIGKILL when the program is to end before it is done. What goes on
/// after the program has ended, and may hold its output open, is not waited for. A program that cannot be
/// started is a `Failure`; a signal to this process ends the program and throws `Interrupted`.
ProcessResult RunProcess(const std::vector<std::string>& arguments, const ProcessConditions& conditions = {});

}  // namespace ZET::Deploy

#endif
