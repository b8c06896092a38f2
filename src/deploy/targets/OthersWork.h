#ifndef ZET_OTHERS_WORK_H
#define ZET_OTHERS_WORK_H

#include <cstdint>
#include <string>

#include "deploy/host/FileState.h"
#include "deploy/targets/Deployment.h"
#include "deploy/targets/LinesPlan.h"
#include "deploy/targets/PlannedTarget.h"

namespace ZET::Deploy {

/// What others did to a target, for a message: "was edited since the last commit".
std::string DescribeOthersWork(const PlannedTarget& planned);

/// Reports what somebody else did to a target or to listed lines, and what becomes, or would become, of it.
void WarnOfOthersWork(Host& host, const PlannedTarget& planned);
void WarnOfOthersWork(Host& host, const PlannedLines& planned);

/// Reports where the replaced text is kept: in the entry that the commit makes.
void TellWhereKept(Host& host, std::int64_t entry, const std::string& path, const FileVersion& version);

/// Warns where no list has the template any more that the target was made from, and the edits of its working
/// copy are not in what comes now.
void WarnOfFormerTemplate(Deployment& product, const PlannedTarget& planned, const std::string& former);

}  // namespace ZET::Deploy

#endif
