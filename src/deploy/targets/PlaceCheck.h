#ifndef ZET_PLACE_CHECK_H
#define ZET_PLACE_CHECK_H

#include <optional>
#include <string>
#include <vector>

#include "deploy/state/Host.h"
#include "zet/ZETProblem.h"

/// What keeps a file from being written where it is, told before anything is.
namespace ZET::Deploy {

/// What is wrong with a directory that files are to be written in; `name` is where its name comes from.
std::vector<Problem> CheckDirectory(const std::string& directory, const std::string& purpose,
                                    const std::string& name);

/// A file that is written under its own name or read back must not be a link to somewhere else.
std::vector<Problem> CheckRegular(const std::string& path);

/// The file, and all that is written beside it. `entry` of the lists is what names it. What a run that was
/// cut short left of it is cleared away first.
std::vector<Problem> CheckFileToWrite(const std::string& path, const std::string& entry, bool isCutShort);

/// The name under which it is written is nobody's.
std::optional<Problem> CheckTemporary(const std::string& path, bool isCutShort);

/// Who only looks need not be the one who writes.
void WarnOfRights(Observer& observer, std::vector<Problem>& problems);

}  // namespace ZET::Deploy

#endif
