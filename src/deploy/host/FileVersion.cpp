#include "deploy/host/FileVersion.h"

#include <fcntl.h>

#include <cerrno>

#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "posix/Clock.h"

namespace ZET::Deploy {

FileVersion VersionIn(int directory, const std::string& name, const std::string& path) {
    struct stat status = {};
    if (fstatat(directory, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno == ENOENT || errno == ENOTDIR) return {};
        FailOfCall(path, _("cannot be looked at"));
    }
    return VersionFrom(status);
}

FileVersion VersionFrom(const struct stat& status) {
    return {status.st_dev, status.st_ino, status.st_size, NanosecondsOf(status.st_ctim)};
}

FileVersion VersionOf(const std::string& path) {
    return VersionIn(AT_FDCWD, path, path);
}

}  // namespace ZET::Deploy
