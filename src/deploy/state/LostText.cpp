#include "deploy/state/LostText.h"

#include <algorithm>

#include "deploy/host/FileState.h"
#include "deploy/host/Words.h"
#include "deploy/state/History.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

/// Whether the file's reserve has the text.
bool IsReserved(const std::string& path, const RecordedState& text) {
    const std::string reserve = path + ZETReserveSuffix;
    return StateOf(reserve).IsRegular() && HasRecordedText(reserve, text);
}

bool IsUnkept(const StoreLimits& limits, const RecordedState& state) {
    return state.exists && !limits.Keep(state.size);
}

/// Whether what somebody made of the file is not kept anywhere any more.
bool IsLost(const StoreLimits& limits, const RecordedFile& file, const std::string& path) {
    return file.wasEdited && file.before.exists && !limits.KeepEdit(file.before.size) &&
           !IsReserved(path, file.before);
}

}  // namespace

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

void WarnOfLossToCome(Host& host, const std::string& path, const std::optional<CapturedFile>& after) {
    const RecordedState now = Capture(path, 0).state;
    const bool isReplaced = now.exists && !(after && HaveSameText(now, after->state));
    if (isReplaced && !IsReserved(path, now))
        WarnOfLostText(host, host.HostPaths().NameOfReal(path), now.size);
}

void TellUnkept(Host& host, const StoreLimits& limits, const RecordedFile& file, const std::string& path,
                const std::vector<std::string>& untouched) {
    if (file.kind == FileKind::Companion) return;
    const bool isLost = IsLost(limits, file, path);
    if (!isLost && !IsUnkept(limits, file.before) && !IsUnkept(limits, file.after)) return;
    if (std::find(untouched.begin(), untouched.end(), file.path) != untouched.end()) return;
    if (isLost)
        WarnOfLostText(host, file.path, file.before.size);
    else if (limits.keepsTexts)
        host.Out().Remark(
            Words("%s: is larger than ZET_HISTORY_MAX_FILE, and recorded without its text", file.path));
}

}  // namespace ZET::Deploy
