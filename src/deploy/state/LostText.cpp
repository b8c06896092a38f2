#include "deploy/state/LostText.h"

#include "deploy/host/Words.h"
#include "deploy/state/History.h"

namespace ZET::Deploy {

void WarnOfLostText(Host& host, const std::string& name, std::uint64_t size) {
    const StoreLimits limits = host.HostHistory().Limits();
    const bool isTrial = host.Wanted().dryRun;
    if (!limits.keepsTexts)
        host.Out().Warning(isTrial ? Words("what %s holds would not be kept, as ZET_HISTORY is no", name)
                                   : Words("what %s held is not kept, as ZET_HISTORY is no", name));
    else if (size > limits.largestText)
        host.Out().Warning(
            isTrial ? Words("what %s holds is larger than ZET_HISTORY_MAX_FILE, and would not be kept", name)
                    : Words("what %s held is larger than ZET_HISTORY_MAX_FILE, and not kept", name));
    else if (!limits.KeepEdit(size))
        host.Out().Warning(
            isTrial ? Words("what %s holds would not be kept, as ZET_HISTORY_KEEP_EDITS is 0", name)
                    : Words("what %s held is not kept, as ZET_HISTORY_KEEP_EDITS is 0", name));
}

}  // namespace ZET::Deploy
