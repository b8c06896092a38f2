#ifndef ZET_NEW_OWNER_H
#define ZET_NEW_OWNER_H

#include <optional>

#include "deploy/state/Replacement.h"
#include "deploy/targets/Targets.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// Whom the list gives the target's file to, where that is new; none: to nobody, or to one whom this host
/// does not have.
std::optional<FileOwner> NewOwnerOf(const Target& target);

/// That this host has no such user or group.
std::optional<Problem> OwnerProblem(const Target& target);

}  // namespace ZET::Deploy

#endif
