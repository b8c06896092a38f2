#include "deploy/state/LostOriginal.h"

#include "deploy/host/Words.h"
#include "deploy/state/History.h"
#include "deploy/state/KnownFiles.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

std::string NameOf(const Host& host, const std::string& path) {
    return host.HostPaths().NameInside(host.HostPaths().WithRealDirectory(path));
}

bool IsWritten(Store& store, const std::string& name, const std::string& path) {
    bool isWritten = false;
    for (const RecordedFile& change : store.ChangesOf(name)) {
        isWritten = isWritten || !HaveSameText(change.before, change.after);
        if (change.kindBefore == FileKind::Original) return isWritten && !IsAsRecorded(path, change.before);
    }
    return isWritten;
}

}  // namespace

bool IsKnownAsWritten(Host& host, const std::string& path) {
    Store* const store = host.HostHistory().ToLookIfUsable();
    return store != nullptr && IsWritten(*store, NameOf(host, path), path);
}

bool IsOriginalLost(Host& host, const std::string& path) {
    if (!IsFileExist(path) || IsFileExist(path + ZETReserveSuffix) || IsFileExist(path + ZETAbsenceSuffix))
        return false;
    Store* const store = host.HostHistory().ToLookIfNeeded();
    if (store == nullptr) return false;
    const std::optional<KnownFile> known = store->Known(NameOf(host, path));
    if (!known || (known->kind != FileKind::Target && known->kind != FileKind::Edit)) return false;
    return IsAsRecorded(path, known->state) && IsWritten(*store, known->path, path);
}

void WarnOfLostOriginal(Host& host, const std::string& path) {
    host.Out().Warning(
        Words("%s: has no reserve, and gets none, as the product's own work is no original (\"history "
              "%s\" tells where that is kept)",
              path, NameOf(host, path)));
}

}  // namespace ZET::Deploy
