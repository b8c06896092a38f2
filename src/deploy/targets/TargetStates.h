#ifndef ZET_TARGET_STATES_H
#define ZET_TARGET_STATES_H

#include "deploy/targets/Deployment.h"
#include "zet/deploy/Status.h"

namespace ZET::Deploy {

RoleStatus RoleStatusOf(HostProduct& product);

/// The states of the role's targets: one that cannot be told does not keep that of the others from being
/// told.
TargetStates StatesOfTargets(Deployment& product);

}  // namespace ZET::Deploy

#endif
