#ifndef ZET_COMMIT_H
#define ZET_COMMIT_H

#include "deploy/targets/CommitPlan.h"

namespace ZET::Deploy {

/// Tells what the plan would do, each target to the observer; whether it would change anything.
bool Preview(Deployment& product, const CommitPlan& plan);

/// Does what the plan says, and records the role's status. Each target is told to the observer when it is
/// done, and so are the services to restart at the end; where the commit breaks off, what was written is told
/// before what stopped it is thrown.
void Commit(Deployment& product, CommitPlan& plan);

}  // namespace ZET::Deploy

#endif
