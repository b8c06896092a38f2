#include "cli/Assignments.h"
#include "cli/Translation.h"

#include "cli/Names.h"  // IWYU pragma: keep, no name of it is ever written
#include "deploy/host/Failure.h"
#include "deploy/targets/EditRules.h"

namespace ZET::Cli {

namespace {

constexpr char kParameterOption[] = "--set";

}  // namespace

StringMap ParseAssignments(const std::vector<std::string>& arguments, const std::string& option) {
    StringMap assignments;
    for (const std::string& argument : arguments) {
        const std::size_t equalsSign = argument.find('=');
        if (equalsSign == std::string::npos || equalsSign == 0) {
            throw UsageError(
                option + ": " +
                Filled(_("\"%s\" is not NAME=VALUE (write a name, \"=\" and a value)"), {argument}));
        }
        if (argument.find('\n') != std::string::npos) {
            throw UsageError(option + ": " +
                             Filled(_("\"%s\" has a line feed in its value (give one without)"),
                                    {argument.substr(0, equalsSign)}));
        }
        // A placeholder may have any name.
        if (option == kParameterOption) RequireOptionName(argument.substr(0, equalsSign), option + ":");
        assignments[argument.substr(0, equalsSign)] = argument.substr(equalsSign + 1);
    }
    return assignments;
}

}  // namespace ZET::Cli
