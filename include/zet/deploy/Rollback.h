#ifndef ZET_DEPLOY_ROLLBACK_H
#define ZET_DEPLOY_ROLLBACK_H

#include <string>
#include <vector>

#include "zet/ZETApi.h"
#include "zet/deploy/Outcome.h"
#include "zet/deploy/Product.h"

namespace ZET::Deploy {

/// Puts back what was there before the role's commits, and before files were edited in place, whichever role
/// edited them: those that `files` has, all when it is empty; and at the end, unless something of the role is
/// left, its status. A target that was edited since stays, unless `isForced`; where others wrote in a file
/// that was edited in place, only the managed blocks go. What cannot be put back does not keep the others
/// from it. A name that is neither is a `UsageError`.
ZET_API Outcome RollBack(Product& product, const std::vector<std::string>& files = {}, bool isForced = false);

}  // namespace ZET::Deploy

#endif
