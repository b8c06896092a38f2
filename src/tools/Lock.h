#ifndef ZET_LOCK_H
#define ZET_LOCK_H

#include "Session.h"

namespace ZET {

/// Keeps other commands that write away, for as long as it lives: a record lock on zet.lock in
/// ZET_VAR_LIB_DIR, which the system drops when its holder dies. Waits 30 s at most, then a `Failure` says
/// who holds it.
class WriteLock {
  public:
    /// What a caller who may not write into ZET_VAR_LIB_DIR gets: a `Failure`, or no lock. The second is for
    /// edits of files of the caller's own, which need no right on the product's directory.
    enum class Need { Required, IfPermitted };

    explicit WriteLock(Session& session, Need need = Need::Required);
    ~WriteLock();
    WriteLock(const WriteLock&) = delete;
    WriteLock& operator=(const WriteLock&) = delete;

  private:
    int m_descriptor;
};

}  // namespace ZET

#endif
