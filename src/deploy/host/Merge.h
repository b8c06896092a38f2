#ifndef ZET_MERGE_H
#define ZET_MERGE_H

#include <cstddef>
#include <string>
#include <vector>

namespace ZET::Deploy {

/// The result of merging two changes of one text.
struct Merged {
    std::string text;                    ///< with both changes; empty if they conflict
    std::vector<std::size_t> conflicts;  ///< first lines in `mine` of what both changed, each in its own way
};

/// Merges what `mine` and `yours` changed in `base`. A change that both made alike is no conflict. Throws a
/// `Failure` that names `path`, with `otherWay` as a remedy, if a text holds a NUL byte.
Merged Merge(const std::string& mine, const std::string& base, const std::string& yours,
             const std::string& path, const std::string& otherWay);

}  // namespace ZET::Deploy

#endif
