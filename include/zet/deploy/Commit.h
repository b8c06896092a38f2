#ifndef ZET_DEPLOY_COMMIT_H
#define ZET_DEPLOY_COMMIT_H

#include "zet/ZETApi.h"
#include "zet/deploy/Outcome.h"
#include "zet/deploy/Plan.h"

namespace ZET::Deploy {

/// Does what the plan says: keeps each original first, writes each file whole or not at all, and records the
/// role's status. A plan with problems is a `Failure`, and so is a target that somebody else wrote since, or
/// whose name leads to another file; what was written before stays, the observer is told of it, and planning
/// and committing again completes it. A plan serves once: one that was committed already, or is not the
/// product's newest, is a `UsageError`. With the option `dryRun`, nothing is written. `observer` is told in
/// place of the product's; null: of the product's.
ZET_API Outcome Commit(Product& product, Plan& plan, Observer* observer = nullptr);

}  // namespace ZET::Deploy

#endif
