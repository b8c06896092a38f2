#ifndef ZET_LINE_EDITS_H
#define ZET_LINE_EDITS_H

#include <optional>
#include <string>

#include "deploy/targets/Deployment.h"
#include "zet/deploy/EditOptions.h"
#include "zet/deploy/FileOutcome.h"

/// Edits lines of any file, chosen by a regular expression. `file` is as the caller wrote it. An empty or
/// broken pattern, and a text that is not one line, are a `UsageError`.
namespace ZET::Deploy {

/// The first line of the real file `path` that matches, looked for only in the section if one is named. None
/// if no line does.
std::optional<std::string> GetLine(Deployment& product, const std::string& path, const std::string& pattern,
                                   const std::optional<std::string>& section = std::nullopt);

FileOutcome SetLine(Deployment& product, const std::string& file, const std::string& pattern,
                    const std::string& line, const EditOptions& options);

/// Brings back the former lines that match.
FileOutcome RestoreLine(Deployment& product, const std::string& file, const std::string& pattern,
                        const EditOptions& options);

}  // namespace ZET::Deploy

#endif
