#ifndef ZET_POSIX_OWN_PLACE_H
#define ZET_POSIX_OWN_PLACE_H

#include <dlfcn.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <string>
#include <string_view>

#include "posix/PathNames.h"

namespace ZET {

/// The file that the code at `own` was loaded from: a library's path, or a program's name as it was started.
/// Empty if unknown.
inline std::string LoadedFrom(const void* own) {
    Dl_info place = {};
    return dladdr(own, &place) == 0 || place.dli_fname == nullptr ? "" : place.dli_fname;
}

/// The file of the running program. Empty, with `errno`, if unknown.
inline std::string OwnProgram() {
    char file[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", file, sizeof file);
    if (length < static_cast<ssize_t>(sizeof file))
        return length <= 0 ? "" : std::string(file, static_cast<std::size_t>(length));
    errno = ENAMETOOLONG;
    return "";
}

/// The directory of the library of that name, if the code at `own` was loaded as part of it; otherwise empty.
inline std::string LibraryDirectory(const void* own, std::string_view name) {
    const std::string place = LoadedFrom(own);
    return place.starts_with('/') && BaseNameOf(place).starts_with(name) ? DirectoryOf(place) : "";
}

}  // namespace ZET

#endif
