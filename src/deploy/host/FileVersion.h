#ifndef ZET_FILE_VERSION_H
#define ZET_FILE_VERSION_H

#include <sys/stat.h>
#include <sys/types.h>

#include <cstdint>
#include <string>

namespace ZET::Deploy {

/// Tells apart the texts that a path leads to over time: each write makes another version.
struct FileVersion {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    std::int64_t changed = 0;  ///< nanoseconds since 1970

    bool operator==(const FileVersion&) const = default;
};

/// Does not follow links: a link that takes the file's place is another version.
FileVersion VersionOf(const std::string& path);

/// From a status that was read already.
FileVersion VersionFrom(const struct stat& status);

/// The same for a name in an open directory; `path` is for the message.
FileVersion VersionIn(int directory, const std::string& name, const std::string& path);

}  // namespace ZET::Deploy

#endif
