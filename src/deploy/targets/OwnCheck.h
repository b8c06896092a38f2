#ifndef ZET_OWN_CHECK_H
#define ZET_OWN_CHECK_H

#include <optional>
#include <string>
#include <vector>

#include "deploy/lists/Targets.h"
#include "deploy/targets/Deployment.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// Whether the targets' own check commands are run. In a host tree that is worked on from outside, they are
/// somebody else's programs, and run only on request.
bool RunsOwnChecks(const Options& wanted);

/// How many check commands of targets are not run for that reason.
std::size_t CountChecksNotRun(const Options& wanted, const std::vector<Target>& targets);

/// Has the target's own check command, if there is one, look at the staged file. `path` is the target as it
/// is on this host, below the root directory. Returns what the command has against the file. Throws a
/// `Failure` if the command cannot be run.
std::optional<Problem> OwnCheckProblem(Deployment& product, const Target& target, const std::string& path,
                                       const std::string& staged);

}  // namespace ZET::Deploy

#endif
