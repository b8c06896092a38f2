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

/// What keeps a file from being written where it is, told before anything is.
namespace ZET::Deploy {

/// What is wrong with a directory that files are to be written in; `name` is where its name comes from.
std::vector<Problem> CheckDirectory(const std::string& directory, const std::string& purpose,
                                    const std::string& name);

/// The same of the directory that a parameter of the product's own names, on which root relies.
std::vector<Problem> CheckOwnDirectory(const Paths& paths, const std::string& name,
                                       const std::string& directory);

/// A file that is written under its own name or read back must not be a link to somewhere else.
std::vector<Problem> CheckRegular(const std::string& path);

/// What was seen of a file that is to be written.
struct FileToWrite {
    std::vector<Problem> problems;
    bool hasCompanion = false;  ///< a reserve, or a mark that there was nothing
};

/// The file, and all that is written beside it. `entry` of the lists is what names it. What a run that was
/// cut short left of it is cleared away first.
FileToWrite CheckFileToWrite(const std::string& path, const char* entry, bool isCutShort);

/// The same of one that was found: what stands beside it is looked up in its directory, which is held.
/// `entry` is not translated yet. `names` are all that are in that directory; null: they are not known.
FileToWrite CheckFileToWrite(const FoundFile& found, const std::string& path, const char* entry,
                             bool isCutShort, const Names* names);

/// The name under which it is written is nobody's.
std::optional<Problem> CheckTemporary(const std::string& path, bool isCutShort);

/// Against the ways by which these names lead root to the file, since a link on one may be somebody else's.
std::vector<Problem> ObjectionsTo(const Paths& paths, const std::set<std::string>& names,
                                  const std::string& path);

/// Who only looks need not be the one who writes.
void WarnOfRights(Observer& observer, std::vector<Problem>& problems);

}  // namespace ZET::Deploy

#endif
