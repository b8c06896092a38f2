#ifndef ZET_NEW_OWNER_H
#define ZET_NEW_OWNER_H

#include <optional>
#include <string>

#include "deploy/host/Paths.h"
#include "deploy/lists/Targets.h"
#include "deploy/state/Replacement.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// The owner that the list gives to the target's file `path`, which was `before`. None if the list names
/// nobody, or somebody whom this host does not have, or if the file or its reserve is there.
std::optional<FileOwner> NewOwnerOf(const Paths& paths, const Target& target, const std::string& path,
                                    const FileState& before);

/// Makes the owner, if there is one, the file's.
void GiveTo(const std::optional<FileOwner>& owner, FileState& file);

/// The problem, if this host has no such user or group.
std::optional<Problem> OwnerProblem(const Paths& paths, const Target& target);

}  // namespace ZET::Deploy

#endif
