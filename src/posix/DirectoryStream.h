#ifndef ZET_POSIX_DIRECTORY_STREAM_H
#define ZET_POSIX_DIRECTORY_STREAM_H

#include <dirent.h>

#include <memory>

namespace ZET {

struct DirectoryCloser {
    void operator()(DIR* directory) const noexcept { closedir(directory); }
};

/// Owns an open directory stream and its descriptor.
using DirectoryStream = std::unique_ptr<DIR, DirectoryCloser>;

}  // namespace ZET

#endif
