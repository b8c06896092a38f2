#include "deploy/state/RoleStatus.h"

#include <chrono>
#include <functional>
#include <string>
#include <thread>

#include "deploy/host/FileState.h"
#include "deploy/host/FileVersion.h"
#include "deploy/host/Words.h"
#include "deploy/state/StateDirectory.h"
#include "deploy/state/StateFile.h"

namespace ZET::Deploy {

namespace {

bool IsEmptied(const std::string& file) {
    return StateOf(file).exists && VersionOf(file).size == 0;
}

/// What `read` finds in the status. A commit empties it first: whoever reads nothing between that and the
/// text reads once more.
std::string Recorded(const std::string& file, const std::function<std::string()>& read) {
    constexpr std::chrono::milliseconds kLongerThanAWrite{100};
    RequireSoundStateFile(file);
    const std::string found = read();
    if (!found.empty() || !StateOf(file).exists) return found;
    if (IsEmptied(file)) std::this_thread::sleep_for(kLongerThanAWrite);
    return read();
}

/// Whether nothing is found in the status, as its text is missing.
bool IsUnknown(HostProduct& product, const std::string& file, const std::string& found) {
    if (!found.empty() || !IsEmptied(file)) return false;
    const Problem emptied = {.file = file,
                             .text = _("is empty: a commit is writing it, or was killed before that"),
                             .remedy = _("look again; if it stays so, commit again")};
    product.Out().Warning(emptied.Describe());
    return true;
}

}  // namespace

RoleStatus RoleStatusOf(HostProduct& product) {
    RoleStatus result;
    const StateDirectory state = product.State();
    IZETConfig& config = product.Config();
    const char* const role = NameOf(product.Role());
    const std::string file = state.Status(product.Role());
    result.commitTime = Recorded(file, [&] {
        StringMap status;
        if (config.IsConfigStatusExist(role)) config.LoadConfigStatus(role, status);
        return status["COMMIT_TIME"];
    });
    result.isCommitTimeUnknown = IsUnknown(product, file, result.commitTime);
    if (product.Role() != Role::Client) return result;
    const std::string ofServer = state.FileServerStatus();
    result.fileServer = Recorded(ofServer, [&] { return config.GetFileServerStatus(); });
    result.isFileServerUnknown = IsUnknown(product, ofServer, result.fileServer);
    return result;
}

}  // namespace ZET::Deploy
