#ifndef ZET_EDITED_TARGETS_H
#define ZET_EDITED_TARGETS_H

#include <string>
#include <vector>

#include "deploy/lists/Targets.h"
#include "deploy/targets/Deployment.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// The target in force, for the host's role, that has this file; null if there is none.
const Target* TargetAt(Deployment& product, const std::string& path);

/// The same, or a target of the other role if that has committed on this host: each would overwrite what the
/// other wrote.
const Target* TargetOfAnyAt(Deployment& product, const std::string& path);

/// The problem of an edit in a file of that target.
Problem ProblemOfTarget(const ListedEdit& edit, const Target& target);

/// The problems of edits in force, in targets of the host's role, that its own edits would not show: those of
/// the other role, if it has committed on this host, and all if templates are named.
std::vector<Problem> EditsOfTargets(Deployment& product, const std::vector<std::string>& templateNames);

}  // namespace ZET::Deploy

#endif
