#ifndef ZET_OPTION_EDITS_H
#define ZET_OPTION_EDITS_H

#include <optional>
#include <string>

#include "deploy/targets/Deployment.h"
#include "zet/deploy/FileOutcome.h"

/// Reads and edits the product's own parameters. A name that cannot be one is a `UsageError`.
namespace ZET::Deploy {

/// None if there is no such parameter.
std::optional<std::string> GetOption(Deployment& product, const std::string& name);

/// Throws a `Failure`, and changes nothing, if a check would have something against the line.
FileOutcome SetOption(Deployment& product, const std::string& name, const std::string& value);

/// Takes the parameter's lines out of the main file, so that its value from elsewhere, or its default,
/// counts.
FileOutcome UnsetOption(Deployment& product, const std::string& name);

}  // namespace ZET::Deploy

#endif
