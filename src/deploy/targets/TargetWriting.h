#ifndef ZET_TARGET_WRITING_H
#define ZET_TARGET_WRITING_H

#include "deploy/targets/CommitPlan.h"
#include "deploy/targets/CommitRecord.h"
#include "deploy/targets/Deployment.h"

namespace ZET::Deploy {

/// Writes the targets of the plan that change, and reports to the observer what became of each. `record` must
/// have begun.
void WriteTargets(Deployment& product, const CommitPlan& plan, const CommitRecord& record);

}  // namespace ZET::Deploy

#endif
