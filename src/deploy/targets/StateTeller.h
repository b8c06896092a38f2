#ifndef ZET_STATE_TELLER_H
#define ZET_STATE_TELLER_H

#include <vector>

#include "deploy/lists/Targets.h"
#include "deploy/state/KnownFiles.h"
#include "deploy/targets/Deployment.h"
#include "zet/deploy/Status.h"

namespace ZET::Deploy {

/// Renders these targets as a commit would, and compares, with diffs if they are wanted. If the state of one
/// cannot be told, those of the others still are.
std::vector<TargetState> TellStates(Deployment& product, const KnownFiles& known,
                                    const std::vector<Target>& targets);

}  // namespace ZET::Deploy

#endif
