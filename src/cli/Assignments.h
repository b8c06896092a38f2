#ifndef ZET_ASSIGNMENTS_H
#define ZET_ASSIGNMENTS_H

#include <string>
#include <vector>

#include "zet/ZETTypes.h"

namespace ZET::Cli {

/// Splits arguments NAME=VALUE at their first "="; the last value of a name wins. Throws a `UsageError` that
/// names the option if an argument has no name or contains a line feed or, for "--set", if its name is no
/// valid parameter name.
StringMap ParseAssignments(const std::vector<std::string>& arguments, const std::string& option);

}  // namespace ZET::Cli

#endif
