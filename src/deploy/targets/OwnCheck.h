#ifndef ZET_OWN_CHECK_H
#define ZET_OWN_CHECK_H

#include <optional>
#include <string>
#include <vector>

#include "deploy/lists/Targets.h"
#include "deploy/targets/Deployment.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// Whether the targets' own check commands are run. Those of a host tree that is worked on from outside are
/// somebody else's programs on this host: only where that was asked for.
bool RunsOwnChecks(const Options& wanted);

/// How many check commands of the targets are not run because of that, though they could be.
std::size_t CountChecksNotRun(const Options& wanted, const std::vector<Target>& targets);

/// Has the target's own check command, if there is one, look at the staged file. `path` is the target as it
/// is on this host, below the root directory. Returns what the command has against it; one that cannot be run
/// is a `Failure`.
std::optional<Problem> OwnCheckProblem(Deployment& product, const Target& target, const std::string& path,
                                       const std::string& staged);

}  // namespace ZET::Deploy

#endif
