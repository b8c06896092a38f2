#ifndef ZET_DEPLOY_ROLLBACK_H
#define ZET_DEPLOY_ROLLBACK_H

#include <string>
#include <vector>

#include "zet/ZETApi.h"
#include "zet/deploy/Outcome.h"
#include "zet/deploy/Product.h"

namespace ZET::Deploy {

/// Puts back what was there before the role's commits, and before files were edited in place by either role:
/// `files`, or all if it is empty. Finally removes the role's status, unless something of the role is left. A
/// target that was edited since stays, unless `isForced`, and so does a file edited in place with a managed
/// block that somebody changed. In one where others wrote other lines, only the managed blocks are removed. A
/// file that cannot be put back does not stop the others. A name in `files` that is neither target nor edited
/// file is a `UsageError`.
ZET_API Outcome RollBack(Product& product, const std::vector<std::string>& files = {}, bool isForced = false);

}  // namespace ZET::Deploy

#endif
