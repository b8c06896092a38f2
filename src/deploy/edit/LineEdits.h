#ifndef ZET_LINE_EDITS_H
#define ZET_LINE_EDITS_H

#include <optional>
#include <string>

#include "deploy/targets/Deployment.h"
#include "zet/deploy/EditOptions.h"
#include "zet/deploy/FileOutcome.h"

/// Lines of any file, chosen by a regular expression. `file` is what the caller wrote. A pattern that is
/// empty or broken, and a line that would not be one, are a `UsageError`.
namespace ZET::Deploy {

/// The first line of the real file `path` that matches, with a section only there; none: no line does.
std::optional<std::string> GetLine(Deployment& product, const std::string& path, const std::string& pattern,
                                   const std::optional<std::string>& section = std::nullopt);

FileOutcome SetLine(Deployment& product, const std::string& file, const std::string& pattern,
                    const std::string& line, const EditOptions& options);

/// Brings the former lines that match back.
FileOutcome RestoreLine(Deployment& product, const std::string& file, const std::string& pattern,
                        const EditOptions& options);

}  // namespace ZET::Deploy

#endif
