#ifndef ZET_NEW_OWNER_H
#define ZET_NEW_OWNER_H

#include <optional>
#include <string>

#include "deploy/lists/Targets.h"
#include "deploy/state/Replacement.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// Whom the list gives the target's file `path` to, which was so before; none: to nobody, to one whom this
/// host does not have, or to the owner of what is there, or of its reserve.
std::optional<FileOwner> NewOwnerOf(const Target& target, const std::string& path, const FileState& before);

/// The file belongs to him, if there is one.
void GiveTo(const std::optional<FileOwner>& owner, FileState& file);

/// That this host has no such user or group.
std::optional<Problem> OwnerProblem(const Target& target);

}  // namespace ZET::Deploy

#endif
