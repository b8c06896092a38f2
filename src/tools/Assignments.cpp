#include "Assignments.h"

#include "ExitStatus.h"

namespace ZET {

StringMap ParseAssignments(const std::vector<std::string>& arguments, const std::string& option) {
    StringMap assignments;
    for (const std::string& argument : arguments) {
        const std::size_t equalsSign = argument.find('=');
        if (equalsSign == std::string::npos || equalsSign == 0) {
            throw UsageError(option + ": \"" + argument + "\" is not NAME=VALUE");
        }
        if (argument.find('\n') != std::string::npos) {
            throw UsageError(option + ": \"" + argument.substr(0, equalsSign) +
                             "\" has a line feed in its value");
        }
        assignments[argument.substr(0, equalsSign)] = argument.substr(equalsSign + 1);
    }
    return assignments;
}

}  // namespace ZET
