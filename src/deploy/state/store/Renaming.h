#ifndef ZET_STORE_RENAMING_H
#define ZET_STORE_RENAMING_H

#include <map>
#include <set>
#include <string>

#include "deploy/state/store/Database.h"

/// What is recorded under a name that leads to another one by now.
namespace ZET::Deploy {

/// The directories of all files that are known.
std::set<std::string> DirectoriesOfKnown(Database& database);

/// New names by old ones.
using NewDirectories = std::map<std::string, std::string>;

/// From now on, records of files directly in such a directory are found under its new name. If two known
/// files get the same name, the one that was written later counts.
void RenameDirectories(Database& database, const NewDirectories& directories);

/// The same, but only as this connection sees it: nothing is written.
void ShowDirectoriesRenamed(Database& database, const NewDirectories& directories);

}  // namespace ZET::Deploy

#endif
