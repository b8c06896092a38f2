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

/// Puts back what was there before the role's commits: the targets that `names` has, all when it is empty,
/// and at the end the role's status. What was edited since stays, unless that is forced. What cannot be put
/// back does not keep the others from it. Each file is told to the observer, and so are the services to
/// restart. A name that is no target is a `UsageError`.
RollbackResult RollBack(Deployment& product, const std::vector<std::string>& names,
                        const RollBackToOptions& options = {});

}  // namespace ZET::Deploy

#endif
