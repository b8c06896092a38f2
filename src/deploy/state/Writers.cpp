#include "deploy/state/Writers.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "deploy/host/Failure.h"
#include "deploy/state/CapturedFile.h"
#include "deploy/state/History.h"

namespace ZET::Deploy {

namespace {

/// Whether the entry put back what was there before, whoever had written that.
bool GoesBack(Store& store, std::int64_t number) {
    const std::optional<RecordedEntry> entry = store.Find(number);
    return entry && std::any_of(entry->words.begin(), entry->words.end(), [](const std::string& word) {
               return word == "undo" || word.starts_with("--to");
           });
}

Writers WritersOf(Store& store, const std::vector<RecordedFile>& changes, const RecordedState& reserve,
                  RecordedState left) {
    for (const RecordedFile& change : changes) {
        if (!HaveSameTextAndMode(change.after, left)) return Writers::OthersToo;
        const bool isFromReserve = HaveSameTextAndMode(change.before, reserve);
        const bool isFirst = isFromReserve || change.kindBefore == FileKind::Original;
        if (isFirst && !GoesBack(store, change.entry))
            return isFromReserve ? Writers::ProductAlone : Writers::OthersToo;
        left = change.before;
    }
    return Writers::NotKept;
}

}  // namespace

Writers WritersSince(const std::string& reserve, const KnownFile& known, Host& host) {
    const RecordedState original = Capture(reserve, 0).state;
    Store* const store = host.HostHistory().ToLookIfUsable();
    if (store == nullptr) return Writers::NotKept;
    try {
        return WritersOf(*store, store->ChangesOf(known.path), original, known.state);
    } catch (const Failure& failure) {
        host.HostHistory().TellUnusable(failure);
        return Writers::NotKept;
    }
}

}  // namespace ZET::Deploy
