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

/// A value with which no command could start any more is a `Failure`, and changes nothing.
FileOutcome SetOption(Deployment& product, const std::string& name, const std::string& value);

}  // namespace ZET::Deploy

#endif
