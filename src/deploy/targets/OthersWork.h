#ifndef ZET_OTHERS_WORK_H
#define ZET_OTHERS_WORK_H

#include "deploy/state/Host.h"
#include "deploy/targets/ListedEdits.h"
#include "deploy/targets/PlannedTarget.h"

namespace ZET::Deploy {

/// Tells the observer what somebody else did to a target or to listed lines, and what becomes, or would
/// become, of that.
void WarnOfOthersWork(Host& host, const PlannedTarget& planned);
void WarnOfOthersWork(Host& host, const PlannedEdits& planned);

}  // namespace ZET::Deploy

#endif
