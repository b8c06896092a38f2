#ifndef ZET_POSIX_CREATION_MASK_H
#define ZET_POSIX_CREATION_MASK_H

#include <sys/stat.h>

namespace ZET {

/// What new files lack as long as it lives, whatever the caller wanted.
class CreationMask {
  public:
    explicit CreationMask(mode_t mask) : m_former(umask(mask)) {}
    ~CreationMask() { umask(m_former); }
    CreationMask(const CreationMask&) = delete;
    CreationMask& operator=(const CreationMask&) = delete;

  private:
    const mode_t m_former;
};

/// By which a new file is its owner's alone.
inline constexpr mode_t kOfOwnerAlone = 077;

/// By which a new file is everybody's to read, and its owner's alone to write.
inline constexpr mode_t kWrittenByOwnerAlone = 022;

}  // namespace ZET

#endif
