#ifndef ZET_VALUE_SOURCES_H
#define ZET_VALUE_SOURCES_H

#include <optional>
#include <string>
#include <vector>

#include "cli/Session.h"
#include "deploy/state/HostValues.h"

namespace ZET::Cli {

/// A line "NAME=VALUE", and one for where it stands unless "-q" is asked for; an element of the document's
/// list "sources".
void TellValue(Session& session, const std::string& name, const std::string& value,
               const std::optional<HostValues::Source>& source);

/// An error for each source that could not be read; the exit status that they lead to.
int TellUnread(Session& session, const std::vector<Problem>& unread);

}  // namespace ZET::Cli

#endif
