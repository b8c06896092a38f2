#ifndef ZET_LOCK_H
#define ZET_LOCK_H

#include <sys/types.h>

#include <chrono>
#include <memory>
#include <string>

#include "deploy/state/StateDirectory.h"
#include "posix/Descriptor.h"
#include "zet/deploy/Observer.h"

namespace ZET::Deploy {

/// Who wants a lock.
struct LockSeeker {
    std::string name;    ///< for those who wait for him: "zet-init commit-config"
    Observer& observer;  ///< is told for whom he waits
    std::chrono::seconds patience{30};
    std::weak_ptr<const void> own{};  ///< the lock that he holds already, while that lives
};

/// Keeps other commands that write away, for as long as it lives: a lock of the open zet.lock in
/// ZET_VAR_LIB_DIR, which the system drops when its holder dies. Says at once for whom it waits, who wrote
/// his name into the file; after 30 s, if the seeker has no other patience, a `Failure` says so. Who would
/// wait for himself is told at once.
class WriteLock {
  public:
    WriteLock(const StateDirectory& state, const LockSeeker& seeker);

    /// For an edit of the file `path`, which needs no right on the product's directory. A caller without it
    /// locks the directory of the file, where directories can be locked; so does a caller with it where
    /// others may write, too.
    WriteLock(const StateDirectory& state, const LockSeeker& seeker, const std::string& path);
    ~WriteLock();
    WriteLock(const WriteLock&) = delete;
    WriteLock& operator=(const WriteLock&) = delete;

    /// Whether it is not known that whoever held the product's lock before came to his end.
    bool MayFollowOneCutShort() const { return m_mayFollowOneCutShort; }

    /// Whether it is the product's own lock, and not only that of a directory.
    bool IsProducts() const { return m_lock >= 0; }

    /// What was found under the product's own lock is known until this expires.
    std::weak_ptr<const void> Life() const { return m_life; }

  private:
    void TakeOver(const LockSeeker& seeker);

    Descriptor m_lock;
    Descriptor m_directoryLock;
    bool m_mayFollowOneCutShort = true;
    off_t m_namedSize = 0;               ///< of the text that names the holder; 0: it could not be written
    std::shared_ptr<const void> m_life;  ///< of the product's own; ends before that is let go
};

/// For who goes back to what was there before, whom nothing may stop: none, with a warning, where no command
/// can hold the lock since it cannot be made.
std::unique_ptr<WriteLock> LockToGoBack(const StateDirectory& state, const LockSeeker& seeker);

}  // namespace ZET::Deploy

#endif
