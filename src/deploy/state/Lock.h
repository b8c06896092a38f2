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

/// Who asks for a lock.
struct LockSeeker {
    std::string name;    ///< for those who wait for this one: "zet-init commit-config"
    Observer& observer;  ///< gets a report of what is waited for
    std::chrono::seconds patience{30};
    std::weak_ptr<const void> own{};  ///< the lock that the seeker holds already, while that lives
};

/// While it lives, keeps away other commands that write, by a lock on the file zet.lock in ZET_VAR_LIB_DIR,
/// which the system drops if its holder dies. Reports at once for whom it waits: each holder writes its name
/// into the file. Throws a `Failure` when the seeker's patience ends, at once if it would wait for itself.
class WriteLock {
  public:
    WriteLock(const StateDirectory& state, const LockSeeker& seeker);

    /// For an edit of the file `path`, which needs no right on the product's directory. A caller without that
    /// right locks the directory of the file, if directories can be locked; one with it does so, too, if
    /// others may write there.
    WriteLock(const StateDirectory& state, const LockSeeker& seeker, const std::string& path);
    ~WriteLock();
    WriteLock(const WriteLock&) = delete;
    WriteLock& operator=(const WriteLock&) = delete;

    /// False only if it is known that the last holder of the product's lock came to its end.
    bool MayFollowOneCutShort() const { return m_mayFollowOneCutShort; }

    /// Whether it is the product's own lock, and not only that of a directory.
    bool IsProducts() const { return m_lock >= 0; }

    /// Expires when the product's own lock ends: until then, what was found under it holds.
    std::weak_ptr<const void> Life() const { return m_life; }

  private:
    void TakeOver(const LockSeeker& seeker);

    Descriptor m_lock;
    Descriptor m_directoryLock;
    bool m_mayFollowOneCutShort = true;
    off_t m_namedSize = 0;               ///< of the text that names the holder; 0 if it could not be written
    std::shared_ptr<const void> m_life;  ///< of the product's own lock; ends before that is released
};

/// For a caller that goes back to what was there before, which nothing may stop. Null, with a warning, if the
/// lock cannot be made, so that no command can hold it.
std::unique_ptr<WriteLock> LockToGoBack(const StateDirectory& state, const LockSeeker& seeker);

}  // namespace ZET::Deploy

#endif
