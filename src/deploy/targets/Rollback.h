#ifndef ZET_ROLLBACK_H
#define ZET_ROLLBACK_H

#include <string>
#include <vector>

#include "deploy/targets/Deployment.h"
#include "zet/deploy/UndoOptions.h"

namespace ZET::Deploy {

struct RollbackResult {
    bool isKept = false;     ///< something stays that should have been put back
    bool isChanged = false;  ///< something was, or would be, put back or forgotten
};

/// Puts back what was there before the role's commits: the targets in `names`, or all if it is empty, and at
/// the end the role's status. What was edited since stays, unless that is forced. A file that cannot be put
/// back does not stop the others. Reports each file and the services to restart to the observer. Throws a
/// `UsageError` for a name that is no target.
RollbackResult RollBack(Deployment& product, const std::vector<std::string>& names,
                        const RollBackToOptions& options = {});

}  // namespace ZET::Deploy

#endif
