#ifndef ZET_ASSIGNMENTS_H
#define ZET_ASSIGNMENTS_H

#include <string>
#include <vector>

#include "zet/ZETTypes.h"

namespace ZET::Cli {

/// Splits arguments NAME=VALUE at their first "="; the last of two wins. One without a name, or with a line
/// feed in it, is a `UsageError` that names the option; for "--set", one whose name no parameter can have,
/// too.
StringMap ParseAssignments(const std::vector<std::string>& arguments, const std::string& option);

}  // namespace ZET::Cli

#endif
