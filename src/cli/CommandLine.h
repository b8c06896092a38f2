#ifndef ZET_COMMAND_LINE_H
#define ZET_COMMAND_LINE_H

#include <optional>
#include <string>

#include "cli/Request.h"

namespace ZET {

/// Parses the command line. `program` is the name under which the program runs. When nothing is left to run
/// (help or version were asked for, or the command line is wrong) the reader has been told, `status` is the
/// exit status, and the result is empty.
std::optional<Request> ParseCommandLine(const std::string& program, int count, char** arguments, int& status);

}  // namespace ZET

#endif
