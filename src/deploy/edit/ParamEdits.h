#ifndef ZET_PARAM_EDITS_H
#define ZET_PARAM_EDITS_H

#include <optional>
#include <string>

#include "deploy/targets/Deployment.h"
#include "zet/deploy/EditOptions.h"
#include "zet/deploy/FileOutcome.h"

/// Reads and edits lines "name=value" of any file. `file` is as the caller wrote it. A name or value that
/// would do something else than what it says is a `UsageError`.
namespace ZET::Deploy {

/// The value in the real file `path`; none if there is no such parameter. Throws a `Failure` if several
/// sections have it, or if it is only set by lines that the module does not count as such.
std::optional<std::string> GetParam(Deployment& product, const std::string& path, const std::string& name,
                                    const std::optional<std::string>& section = std::nullopt);

FileOutcome SetParam(Deployment& product, const std::string& file, const std::string& name,
                     const std::string& value, const EditOptions& options);

/// Comments the parameter's line out.
FileOutcome UnsetParam(Deployment& product, const std::string& file, const std::string& name,
                       const EditOptions& options);

/// Brings a parameter's former line back.
FileOutcome RestoreParam(Deployment& product, const std::string& file, const std::string& name,
                         const EditOptions& options);

}  // namespace ZET::Deploy

#endif
