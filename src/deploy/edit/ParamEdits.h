#ifndef ZET_PARAM_EDITS_H
#define ZET_PARAM_EDITS_H

#include <optional>
#include <string>

#include "deploy/targets/Deployment.h"
#include "zet/deploy/EditOptions.h"
#include "zet/deploy/FileOutcome.h"

/// Lines "name=value" of any file. `file` is what the caller wrote. A name or value that would do something
/// else than what it says is a `UsageError`.
namespace ZET::Deploy {

/// The value in the real file `path`; none: there is no such parameter. A `Failure` where several sections
/// have it, or a line that does not count as one.
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
