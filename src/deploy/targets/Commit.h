#ifndef ZET_COMMIT_H
#define ZET_COMMIT_H

#include "deploy/targets/CommitPlan.h"

namespace ZET::Deploy {

/// Reports what the plan would do, each target by itself. Returns whether the history would get an entry.
bool Preview(Deployment& product, const CommitPlan& plan);

/// Does what the plan says, and records the role's status. Reports each target when it is done, and the
/// services to restart at the end. If the commit breaks off, it reports what was written before it throws.
void Commit(Deployment& product, CommitPlan& plan);

}  // namespace ZET::Deploy

#endif
