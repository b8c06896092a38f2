#ifndef ZET_DEPLOY_COMMIT_H
#define ZET_DEPLOY_COMMIT_H

#include "zet/ZETApi.h"
#include "zet/deploy/Outcome.h"
#include "zet/deploy/Plan.h"

namespace ZET::Deploy {

/// Carries out the plan: keeps each original first, writes each file completely or not at all, and records
/// the role's status. Throws a `Failure` for a plan with problems, for a target that somebody else wrote
/// since, and for one whose name now leads to another file; what was written before stays and is reported to
/// the observer, and planning and committing again completes it. A plan can be committed once: one that was
/// already committed, or is not the product's newest, is a `UsageError`. With the option `dryRun` nothing is
/// written. `observer` replaces the product's own; null keeps that.
ZET_API Outcome Commit(Product& product, Plan& plan, Observer* observer = nullptr);

}  // namespace ZET::Deploy

#endif
