#ifndef ZET_LISTED_DIRECTORY_H
#define ZET_LISTED_DIRECTORY_H

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "deploy/host/Paths.h"

namespace ZET::Deploy {

/// A `Failure` when a directory is missing because a link on the way to it, or its own name, leads nowhere:
/// what it is to hold may come back.
void RequireWayTo(const Paths& paths, const std::string& directory);

/// The names of a directory's files that end with `suffix`, in the order of their bytes; those that begin
/// with a dot are left out. None where there is no directory; one that cannot be read, and a link that leads
/// nowhere, is a `Failure`.
std::vector<std::string> NamesIn(const Paths& paths, const std::string& directory, const std::string& suffix);

using Names = std::unordered_set<std::string>;

/// All names in a directory that is held; none when it cannot be listed, or holds more than `most`.
std::optional<Names> AllNamesIn(int directory, std::size_t most);

/// The text of a file that a path in one of the product's directories leads to. A link that leads out of the
/// root directory, and what is no regular file, is a `Failure`.
std::string ReadInside(const Paths& paths, const std::string& file);

}  // namespace ZET::Deploy

#endif
