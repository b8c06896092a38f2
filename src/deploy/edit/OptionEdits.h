#ifndef ZET_OPTION_EDITS_H
#define ZET_OPTION_EDITS_H

#include <optional>
#include <string>

#include "deploy/targets/Deployment.h"
#include "zet/deploy/FileOutcome.h"

/// The parameters of the product itself. A name that cannot be one is a `UsageError`.
namespace ZET::Deploy {

/// None: there is no such parameter.
std::optional<std::string> GetOption(Deployment& product, const std::string& name);

/// What a check would have against the line is a `Failure`, and changes nothing.
FileOutcome SetOption(Deployment& product, const std::string& name, const std::string& value);

/// Takes the lines of the parameter out of the main file, so that what else gives it counts, or its default.
FileOutcome UnsetOption(Deployment& product, const std::string& name);

}  // namespace ZET::Deploy

#endif
