#ifndef ZET_POSIX_OPEN_LIMIT_H
#define ZET_POSIX_OPEN_LIMIT_H

#include <cerrno>

namespace ZET {

/// Whether a file could not be opened only because the process or the system has so many open already.
inline bool IsOfOpenLimit(int error) {
    return error == EMFILE || error == ENFILE;
}

}  // namespace ZET

#endif
