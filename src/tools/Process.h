#ifndef ZET_PROCESS_H
#define ZET_PROCESS_H

#include <string>
#include <vector>

namespace ZET {

struct ProcessResult {
    int status = 0;      ///< the exit status; 128 and the number of the signal that ended it
    std::string output;  ///< standard output and standard error, as they came
};

/// Runs a program to its end, without a shell: its name (looked up in PATH) and its arguments. Standard input
/// is empty. `environment` adds to the environment or replaces parts of it, "NAME=VALUE" each. A program that
/// cannot be started is a `Failure`; a signal to this process ends the program and throws `Interrupted`.
ProcessResult RunProcess(const std::vector<std::string>& arguments,
                         const std::vector<std::string>& environment = {});

}  // namespace ZET

#endif
