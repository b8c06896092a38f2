#ifndef ZET_LOOKUP_H
#define ZET_LOOKUP_H

#include <optional>
#include <string>

#include "cli/Session.h"

namespace ZET::Cli {

/// Gives the document the fields that it has even if the lookup fails; `key` is "value" or "line".
void BeginLookup(Session& session, const char* key);

/// The real file of the argument FILE, checked to be readable and allowed to be shown.
std::string FileToShow(Session& session, const std::string& file);

/// Reports what was found, under `key`, and returns the exit status. If nothing was found, only the status
/// says so, and `what` in detail.
int ReportLookup(Session& session, const std::string& what, const char* key,
                 const std::optional<std::string>& found);

}  // namespace ZET::Cli

#endif
