#ifndef ZET_EDITED_TARGETS_H
#define ZET_EDITED_TARGETS_H

#include <string>
#include <vector>

#include "deploy/lists/Targets.h"
#include "deploy/targets/Deployment.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// The target in force that the file is for the host's role. Null: it is none.
const Target* TargetAt(Deployment& product, const std::string& path);

/// The same, or one of the other role, where that has committed on this host: each would overwrite what the
/// other wrote.
const Target* TargetOfAnyAt(Deployment& product, const std::string& path);

/// An edit of that target.
Problem ProblemOfTarget(const ListedEdit& edit, const Target& target);

/// Edits in force of targets of the host's role, of which the edits that it makes itself would not tell:
/// those of the other role, where that has committed on this host, and all where templates are named.
std::vector<Problem> EditsOfTargets(Deployment& product, const std::vector<std::string>& templateNames);

}  // namespace ZET::Deploy

#endif
