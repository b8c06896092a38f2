#ifndef ZET_POSIX_MODE_BITS_H
#define ZET_POSIX_MODE_BITS_H

#include <sys/stat.h>
#include <sys/types.h>

namespace ZET {

/// The part of a mode that can be set: the permissions and the special bits.
inline constexpr mode_t kModeBits = 07777;

/// The bits that make a program run as the owner or group of its file.
inline constexpr mode_t kSetIdBits = S_ISUID | S_ISGID;

}  // namespace ZET

#endif
