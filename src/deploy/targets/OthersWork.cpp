#include "deploy/targets/OthersWork.h"

#include <string>

#include "deploy/targets/CommitPlan.h"

namespace ZET::Deploy {

namespace {

std::string FateOfOthersWork(const PlannedTarget& planned, bool isDryRun) {
    if (!planned.before.exists) return DescribeOthersWork(planned);
    const std::string verb = isDryRun ? " would be " : " are ";
    return DescribeOthersWork(planned) + (planned.isTouched ? "; the edits" : "; they") + verb +
           (planned.isMerged ? "merged" : "overwritten");
}

}  // namespace

void WarnOfOthersWork(Host& host, const PlannedTarget& planned) {
    if (planned.before.links > 1 && planned.IsChange()) {
        host.Out().Warning(planned.path + ": has " + std::to_string(planned.before.links) +
                           " names (hard links); the others keep the former text");
    }
    if (!planned.IsOthersWork()) return;
    const std::string text = planned.path + ": " + FateOfOthersWork(planned, host.Wanted().dryRun);
    planned.isMerged ? host.Out().Remark(text) : host.Out().Warning(text);
}

void WarnOfOthersWork(Host& host, const PlannedEdits& planned) {
    if (planned.isMerged) {
        host.Out().Remark(planned.file.path + ": a line that the last commit set was changed since; it " +
                          (host.Wanted().dryRun ? "would stay" : "stays"));
    }
    if (!planned.isEdited) return;
    host.Out().Warning(planned.file.path + ": a line that the last commit set was changed since; it " +
                       (host.Wanted().dryRun ? "would be" : "is") + " set again");
}

}  // namespace ZET::Deploy
