#include "PathArgument.h"

#include <sys/stat.h>

#include <cerrno>

#include "Message.h"
#include "posix/Printable.h"

namespace ZET::Core {

void RequirePath(const std::string& path, const char* operation) {
    RequireNotEmpty(path, operation);
    if (path.find('\0') != std::string::npos)
        FailCheck("File name '%s' holds a NUL byte.", Printable(path).c_str());
}

bool IsDanglingLink(const std::string& path) {
    const int error = errno;
    struct stat status;
    const bool isLink =
        (error == ENOENT || error == ELOOP) && ::lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
    errno = error;
    return isLink;
}

}  // namespace ZET::Core
