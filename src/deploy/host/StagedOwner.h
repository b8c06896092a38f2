#ifndef ZET_STAGED_OWNER_H
#define ZET_STAGED_OWNER_H

#include <string>

#include "deploy/host/StagedText.h"
#include "zet/deploy/FileOutcome.h"

namespace ZET::Deploy {

/// Gives the staged text the owner of the file `path`, which it is to replace, as far as this user may give
/// files away. Returns the mode and owner that the file will then have.
FileState GiveOwnerInPlace(const std::string& path, const std::string& staged);

/// The same, if `replaced` is what was seen of the file `path`. If the owner is right already, the text is
/// not written to a file.
FileState GiveOwnerInPlace(const std::string& path, const StagedText& staged, const FileState& replaced);

}  // namespace ZET::Deploy

#endif
