#ifndef ZET_VALUE_SOURCES_H
#define ZET_VALUE_SOURCES_H

#include <optional>
#include <string>

#include "cli/Session.h"
#include "deploy/state/HostValues.h"

namespace ZET::Cli {

/// A line "NAME=VALUE", and one for where it stands unless "-q" is asked for; an element of the document's
/// list "sources".
void TellValue(Session& session, const std::string& name, const std::string& value,
               const std::optional<HostValues::Source>& source);

}  // namespace ZET::Cli

#endif
