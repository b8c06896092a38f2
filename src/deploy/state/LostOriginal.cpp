#include "deploy/state/LostOriginal.h"

#include "deploy/host/Companions.h"
#include "deploy/host/Words.h"
#include "deploy/state/History.h"
#include "deploy/state/KnownFiles.h"
#include "text/ShellWord.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

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
    return store != nullptr && IsWritten(*store, host.HostPaths().NameOfReal(path), path);
}

bool IsOriginalLost(Host& host, const std::string& path) {
    if (!IsFileExist(path) || HasCompanion(path)) return false;
    Store* const store = host.HostHistory().ToLookForWriting();
    if (store == nullptr) return false;
    const std::optional<KnownFile> known = store->Known(host.HostPaths().NameOfReal(path));
    if (!known || (known->kind != FileKind::Target && known->kind != FileKind::Edit)) return false;
    return IsAsRecorded(path, known->state) && IsWritten(*store, known->path, path);
}

bool IsUnseen(Host& host, const std::string& path) {
    if (host.HostHistory().IsDenied()) return false;
    Store* const store = host.HostHistory().ToLookIfUsable();
    if (store == nullptr) return true;
    const std::string name = host.HostPaths().NameOfReal(path);
    const auto isSeen = [&](const std::string& each) {
        return store->Known(each).has_value() || store->FirstChangeAfter(each, 0).has_value();
    };
    return !isSeen(name) && !isSeen(name + ZETReserveSuffix) && !isSeen(name + ZETAbsenceSuffix);
}

void WarnOfLostOriginal(Host& host, const std::string& path) {
    host.Out().Warning(
        Words("%s: has no reserve, and gets none, as the product's own work is no original (\"history "
              "%s\" tells where that is kept)",
              path, Text::ShellWord(host.HostPaths().NameOfReal(path))));
}

}  // namespace ZET::Deploy
