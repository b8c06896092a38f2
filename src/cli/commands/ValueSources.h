#ifndef ZET_VALUE_SOURCES_H
#define ZET_VALUE_SOURCES_H

#include <optional>
#include <string>
#include <vector>

#include "cli/Session.h"
#include "deploy/state/HostValues.h"

namespace ZET::Cli {

/// Reports a line "NAME=VALUE" and, without "-q", a line with its source; in the document, an element of the
/// list "sources".
void TellValue(Session& session, const std::string& name, const std::string& value,
               const std::optional<HostValues::Source>& source);

/// Reports an error for each source that could not be read; returns the resulting exit status.
int TellUnread(Session& session, const std::vector<Problem>& unread);

}  // namespace ZET::Cli

#endif
