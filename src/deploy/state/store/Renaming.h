#ifndef ZET_STORE_RENAMING_H
#define ZET_STORE_RENAMING_H

#include <map>
#include <set>
#include <string>

#include "deploy/state/store/Database.h"

/// What stands under a name that leads to another one by now.
namespace ZET::Deploy {

/// Of all files that are known.
std::set<std::string> DirectoriesOfKnown(Database& database);

/// New names by old ones.
using NewDirectories = std::map<std::string, std::string>;

/// Whatever stands there of files right in such a directory stands under its new name from now on. Of two
/// that are known by one name then, the one that was written later counts.
void RenameDirectories(Database& database, const NewDirectories& directories);

/// The same as this connection sees it: nothing is written.
void ShowDirectoriesRenamed(Database& database, const NewDirectories& directories);

}  // namespace ZET::Deploy

#endif
