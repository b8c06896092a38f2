#ifndef ZET_LISTED_DIRECTORY_H
#define ZET_LISTED_DIRECTORY_H

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "deploy/host/Paths.h"

namespace ZET::Deploy {

/// Throws a `Failure` if a directory is missing because it, or a part of the way to it, is a link that leads
/// nowhere: its files may come back.
void RequireWayTo(const Paths& paths, const std::string& directory);

/// The names of a directory's files that end with `suffix`, in byte order, without those that begin with a
/// dot. Empty if there is no directory. Throws a `Failure` if it cannot be read, or is a link that leads
/// nowhere.
std::vector<std::string> NamesIn(const Paths& paths, const std::string& directory, const std::string& suffix);

using Names = std::unordered_set<std::string>;

/// All names in an open directory; none if it cannot be listed, or holds more than `most`.
std::optional<Names> AllNamesIn(int directory, std::size_t most);

/// The text of a file in one of the product's directories. Throws a `Failure` if its path leads out of the
/// root directory, or to something that is not a regular file.
std::string ReadInside(const Paths& paths, const std::string& file);

}  // namespace ZET::Deploy

#endif
