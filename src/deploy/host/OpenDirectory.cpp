#include "deploy/host/OpenDirectory.h"

#include "deploy/host/Words.h"

namespace ZET::Deploy {

bool IsShared(const struct stat& status) {
    return S_ISDIR(status.st_mode) && (status.st_mode & S_ISVTX) != 0;
}

std::string RemedyOfOpen(const struct stat& directory) {
    if (IsShared(directory)) return _("use a directory of root's own");
    return (directory.st_mode & S_IWOTH) != 0 ? _("chmod o-w it") : _("chmod g-w it");
}

}  // namespace ZET::Deploy
