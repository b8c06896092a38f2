#ifndef ZET_TARGET_STATES_H
#define ZET_TARGET_STATES_H

#include "deploy/targets/Deployment.h"
#include "zet/deploy/Status.h"

namespace ZET::Deploy {

/// The states of the role's targets. If one cannot be told, the others still are.
TargetStates StatesOfTargets(Deployment& product);

}  // namespace ZET::Deploy

#endif
