#ifndef ZET_LOOKUP_H
#define ZET_LOOKUP_H

#include <optional>
#include <string>

#include "cli/Session.h"

namespace ZET::Cli {

/// Gives the document the fields that it has even if nobody could look; `key` is "value" or "line".
void BeginLookup(Session& session, const char* key);

/// The caller's FILE, of which he asks for the text: the real file, checked to be readable, and to be shown.
std::string FileToShow(Session& session, const std::string& file);

/// Reports what was looked up, under `key`, and returns the exit status: a lookup that found nothing is told
/// by that alone, and in detail by `what`.
int ReportLookup(Session& session, const std::string& what, const char* key,
                 const std::optional<std::string>& found);

}  // namespace ZET::Cli

#endif
