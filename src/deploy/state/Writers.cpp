#include "deploy/state/Writers.h"

#include "deploy/state/CapturedFile.h"
#include "deploy/state/History.h"

namespace ZET::Deploy {

Writers WritersSince(const std::string& reserve, const KnownFile& known, Host& host) {
    Store* const store = host.HostHistory().ToLookIfUsable();
    if (store == nullptr) return Writers::NotKept;
    const RecordedState original = Capture(reserve, 0).state;
    RecordedState left = known.state;
    for (const RecordedFile& change : store->ChangesOf(known.path)) {
        if (!HaveSameTextAndMode(change.after, left)) return Writers::OthersToo;
        if (HaveSameTextAndMode(change.before, original)) return Writers::ProductAlone;
        if (change.kindBefore == FileKind::Original) return Writers::OthersToo;
        left = change.before;
    }
    return Writers::NotKept;
}

}  // namespace ZET::Deploy
