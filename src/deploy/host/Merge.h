#ifndef ZET_MERGE_H
#define ZET_MERGE_H

#include <cstddef>
#include <string>
#include <vector>

namespace ZET::Deploy {

/// What became of two changes of one text.
struct Merged {
    std::string text;                    ///< with both changes, where they do not conflict
    std::vector<std::size_t> conflicts;  ///< first lines in `mine` of what both changed, each in its own way
};

/// Brings together what `mine` and `yours` made of `base`. A change that both have made alike is no conflict.
/// A text that cannot be merged (a NUL byte in it) is a `Failure` that names `path` and the other way.
Merged Merge(const std::string& mine, const std::string& base, const std::string& yours,
             const std::string& path, const std::string& otherWay);

}  // namespace ZET::Deploy

#endif
