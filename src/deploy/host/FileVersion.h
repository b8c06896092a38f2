#ifndef ZET_FILE_VERSION_H
#define ZET_FILE_VERSION_H

#include <sys/stat.h>
#include <sys/types.h>

#include <cstdint>
#include <string>

namespace ZET::Deploy {

/// Which of the texts that a path ever led to it leads to now: another one after each write.
struct FileVersion {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    std::int64_t changed = 0;  ///< nanoseconds

    bool operator==(const FileVersion&) const = default;
};

/// Of a real file: a link that takes its place is another version.
FileVersion VersionOf(const std::string& path);

/// Of a file that was looked at.
FileVersion VersionFrom(const struct stat& status);

/// The same of a name in a directory that is held; `path` is for the message.
FileVersion VersionIn(int directory, const std::string& name, const std::string& path);

}  // namespace ZET::Deploy

#endif
