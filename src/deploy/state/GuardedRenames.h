#ifndef ZET_GUARDED_RENAMES_H
#define ZET_GUARDED_RENAMES_H

#include "zet/ZETHost.h"

namespace ZET::Deploy {

/// For as long as the object lives, each rename is seen by the guard before it is made.
class GuardedRenames {
  public:
    explicit GuardedRenames(const ZETRenameGuard& guard) { SetRenameGuard(guard); }
    ~GuardedRenames() { SetRenameGuard(nullptr); }
    GuardedRenames(const GuardedRenames&) = delete;
    GuardedRenames& operator=(const GuardedRenames&) = delete;
};

}  // namespace ZET::Deploy

#endif
