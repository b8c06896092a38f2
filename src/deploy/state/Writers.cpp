#include "deploy/state/Writers.h"

#include <vector>

#include "deploy/state/CapturedFile.h"
#include "deploy/state/History.h"

namespace ZET::Deploy {

namespace {

Writers WritersOf(const std::vector<RecordedFile>& changes, const RecordedState& reserve,
                  RecordedState left) {
    for (const RecordedFile& change : changes) {
        if (!HaveSameTextAndMode(change.after, left)) return Writers::OthersToo;
        const bool isFromReserve = HaveSameTextAndMode(change.before, reserve);
        const bool isFirst = isFromReserve || change.kindBefore == FileKind::Original;
        if (isFirst && !change.isPutBack) return isFromReserve ? Writers::ProductAlone : Writers::OthersToo;
        left = change.before;
    }
    return Writers::NotKept;
}

}  // namespace

Writers WritersSince(const std::string& reserve, const KnownFile& known, Host& host) {
    const RecordedState original = Capture(reserve, 0).state;
    Writers writers = Writers::NotKept;
    host.HostHistory().TryLook(
        [&](Store& store) { writers = WritersOf(store.ChangesOf(known.path), original, known.state); });
    return writers;
}

}  // namespace ZET::Deploy
