#include "deploy/state/Writers.h"

#include <vector>

#include "deploy/host/Failure.h"
#include "deploy/state/CapturedFile.h"
#include "deploy/state/History.h"

namespace ZET::Deploy {

static Writers WritersOf(const std::vector<RecordedFile>& changes, const RecordedState& reserve,
                         RecordedState left) {
    for (const RecordedFile& change : changes) {
        if (!HaveSameTextAndMode(change.after, left)) return Writers::OthersToo;
        if (HaveSameTextAndMode(change.before, reserve)) return Writers::ProductAlone;
        if (change.kindBefore == FileKind::Original) return Writers::OthersToo;
        left = change.before;
    }
    return Writers::NotKept;
}

Writers WritersSince(const std::string& reserve, const KnownFile& known, Host& host) {
    const RecordedState original = Capture(reserve, 0).state;
    Store* const store = host.HostHistory().ToLookIfUsable();
    if (store == nullptr) return Writers::NotKept;
    try {
        return WritersOf(store->ChangesOf(known.path), original, known.state);
    } catch (const Failure& failure) {
        host.HostHistory().TellUnusable(failure);
        return Writers::NotKept;
    }
}

}  // namespace ZET::Deploy
