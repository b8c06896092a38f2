#ifndef ZET_STAGED_OWNER_H
#define ZET_STAGED_OWNER_H

#include <string>

#include "deploy/host/StagedText.h"
#include "zet/deploy/FileOutcome.h"

namespace ZET::Deploy {

/// Gives a text made in `staged` the owner of the file `path`, whose place it is to take, as far as this user
/// may give files away. Returns the mode and owner that it has once it is there.
FileState GiveOwnerInPlace(const std::string& path, const std::string& staged);

/// The same where `replaced` is what was seen of the file `path`. A text that has the owner already needs no
/// file.
FileState GiveOwnerInPlace(const std::string& path, const StagedText& staged, const FileState& replaced);

}  // namespace ZET::Deploy

#endif
