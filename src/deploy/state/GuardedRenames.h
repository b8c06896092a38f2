#ifndef ZET_GUARDED_RENAMES_H
#define ZET_GUARDED_RENAMES_H

#include <utility>

#include "zet/ZETHost.h"

namespace ZET::Deploy {

/// While the object lives, the guard sees each rename before it is made.
class GuardedRenames {
  public:
    explicit GuardedRenames(const ZETRenameGuard& guard) : m_former(SetRenameGuard(guard)) {}
    ~GuardedRenames() { SetRenameGuard(std::move(m_former)); }
    GuardedRenames(const GuardedRenames&) = delete;
    GuardedRenames& operator=(const GuardedRenames&) = delete;

  private:
    ZETRenameGuard m_former;
};

}  // namespace ZET::Deploy

#endif
