#ifndef ZET_POSIX_MODE_BITS_H
#define ZET_POSIX_MODE_BITS_H

#include <sys/stat.h>
#include <sys/types.h>

namespace ZET {

/// What of a mode can be set: the permissions, and the bits beside them.
inline constexpr mode_t kModeBits = 07777;

/// By which a program runs as the owner or the group of its file.
inline constexpr mode_t kSetIdBits = S_ISUID | S_ISGID;

}  // namespace ZET

#endif
