#ifndef ZET_ROLE_STATUS_H
#define ZET_ROLE_STATUS_H

#include "deploy/state/HostProduct.h"
#include "zet/deploy/Status.h"

namespace ZET::Deploy {

/// What is recorded of the role. What a commit is writing right now, or was killed at, is told as a warning.
RoleStatus RoleStatusOf(HostProduct& product);

}  // namespace ZET::Deploy

#endif
