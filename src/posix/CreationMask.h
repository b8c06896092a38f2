#ifndef ZET_POSIX_CREATION_MASK_H
#define ZET_POSIX_CREATION_MASK_H

#include <sys/stat.h>

namespace ZET {

/// Sets the process's file-creation mask for the object's lifetime.
class CreationMask {
  public:
    explicit CreationMask(mode_t mask) : m_former(umask(mask)) {}
    ~CreationMask() { umask(m_former); }
    CreationMask(const CreationMask&) = delete;
    CreationMask& operator=(const CreationMask&) = delete;

  private:
    const mode_t m_former;
};

/// With this mask nobody but its owner may read or write a new file.
inline constexpr mode_t kOfOwnerAlone = 077;

/// With this mask everybody may read a new file, but only its owner may write it.
inline constexpr mode_t kWrittenByOwnerAlone = 022;

}  // namespace ZET

#endif
