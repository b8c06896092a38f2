#include "deploy/host/FileMode.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "posix/Descriptor.h"
#include "posix/ModeBits.h"

namespace ZET::Deploy {

mode_t ModeOf(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) FailOfCall(path, _("its mode cannot be read"));
    return status.st_mode & kModeBits;
}

void RequireMode(int descriptor, const std::string& path, mode_t mode) {
    struct stat status = {};
    if ((descriptor >= 0 ? fstat(descriptor, &status) : lstat(path.c_str(), &status)) != 0)
        FailOfCall(path, _("its mode cannot be read"));
    if ((status.st_mode & kModeBits) == (mode & kModeBits)) return;
    errno = EACCES;
    if (descriptor < 0 || fchmod(descriptor, mode & kModeBits) != 0)
        FailOfCall(path, _("cannot get its mode"));
}

void RequireModeOf(const std::string& model, const std::string& staged) {
    const mode_t mode = ModeOf(model);
    struct stat status = {};
    if (lstat(staged.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
        (status.st_mode & kModeBits) == mode)
        return;
    const Descriptor descriptor(open(staged.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    RequireMode(descriptor, staged, mode);
}

}  // namespace ZET::Deploy
