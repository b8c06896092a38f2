#ifndef ZET_PLACE_CHECK_H
#define ZET_PLACE_CHECK_H

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "deploy/host/ListedDirectory.h"
#include "deploy/host/Paths.h"
#include "deploy/state/Host.h"
#include "zet/ZETProblem.h"

/// Finds what would keep a file from being written in its place before anything is written.
namespace ZET::Deploy {

/// What is wrong with a directory in which files are to be written; `name` says where its name comes from.
std::vector<Problem> CheckDirectory(const std::string& directory, const std::string& purpose,
                                    const std::string& name);

/// The same for a directory that a parameter of the product names, and on which root relies.
std::vector<Problem> CheckOwnDirectory(const Paths& paths, const std::string& name,
                                       const std::string& directory);

/// A file that is written under its own name, or read back, must be regular, and no link to somewhere else.
std::vector<Problem> CheckRegular(const std::string& path);

/// What was seen of a file that is to be written.
struct FileToWrite {
    std::vector<Problem> problems;
    bool hasCompanion = false;  ///< a reserve, or a mark that there was nothing
};

/// Checks the file, and all that is written beside it. `entry` says what names it in the lists. If
/// `isCutShort`, what a run left of the file is cleared away first.
FileToWrite CheckFileToWrite(const std::string& path, const char* entry, bool isCutShort);

/// The same for a file that was found: its companions are looked up in its directory, which is held. `entry`
/// is not translated yet. `names` are all that are in that directory; null if they are not known.
FileToWrite CheckFileToWrite(const FoundFile& found, const std::string& path, const char* entry,
                             bool isCutShort, const Names* names);

/// Nobody else may have the name under which the file is first written.
std::optional<Problem> CheckTemporary(const std::string& path, bool isCutShort);

/// What is wrong with the ways by which these names lead root to the file, since a link there may be somebody
/// else's.
std::vector<Problem> ObjectionsTo(const Paths& paths, const std::set<std::string>& names,
                                  const std::string& path);

/// Turns problems with this user's rights into warnings: whoever only looks need not be the one who writes.
void WarnOfRights(Observer& observer, std::vector<Problem>& problems);

}  // namespace ZET::Deploy

#endif
