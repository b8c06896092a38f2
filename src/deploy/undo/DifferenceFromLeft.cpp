#include "deploy/undo/DifferenceFromLeft.h"

#include "deploy/host/FileState.h"
#include "deploy/host/Words.h"
#include "deploy/state/CapturedFile.h"

namespace ZET::Deploy {

std::string DifferenceBetween(const RecordedState& now, const RecordedState& left) {
    if (!now.exists) return _("is not there any more");
    if (!left.exists) return _("is there again");
    if (!HaveSameText(now, left)) return _("holds another text");
    const std::string change = DescribeChange(StateOfRecorded(left), StateOfRecorded(now));
    return change.empty() ? _("has other attributes") : Words("has another %s", change);
}

std::string NotAsLeftBy(std::int64_t number) {
    return number == 0 ? _("it is not as the last commit left it")
                       : Words("it is not as change %s left it", std::to_string(number));
}

}  // namespace ZET::Deploy
