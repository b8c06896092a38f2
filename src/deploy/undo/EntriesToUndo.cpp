#include "deploy/undo/EntriesToUndo.h"

#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"
#include "deploy/state/KeptEntries.h"

namespace ZET::Deploy {

std::optional<RecordedEntry> NewestBefore(Store& store, std::optional<std::int64_t> before, bool isTrial) {
    constexpr std::size_t kAtOnce = 16;
    for (;;) {
        const std::vector<RecordedEntry> entries = store.Entries(kAtOnce, before);
        if (entries.empty()) return std::nullopt;
        for (const RecordedEntry& entry : entries)
            if ((isTrial || entry.outcome != EntryOutcome::Open) && !store.FilesOf(entry.number).empty())
                return entry;
        before = entries.back().number;
    }
}

RecordedEntry EntryToUndo(Store& store, const UndoOptions& options, bool isTrial) {
    if (options.entry) return KeptEntry(store, *options.entry);
    std::optional<RecordedEntry> last = NewestBefore(store, std::nullopt, isTrial);
    if (!last)
        throw Failure({.file = store.File(),
                       .text = _("has no change that could be taken back"),
                       .remedy = _("nothing was changed")});
    return std::move(*last);
}

std::vector<RecordedFile> FilesToUndo(Store& store, std::int64_t number) {
    std::vector<RecordedFile> files = store.FilesOf(number);
    std::erase_if(files, [&](const RecordedFile& file) {
        if (file.kind != FileKind::Status) return false;
        const std::vector<RecordedEntry> entries = store.EntriesOf(file.path);
        return !entries.empty() && entries.front().number > number;
    });
    return files;
}

std::vector<RecordedEntry> EntriesAfter(Store& store, std::int64_t number) {
    std::vector<RecordedEntry> all;
    constexpr std::size_t kAtOnce = 64;
    std::optional<std::int64_t> before;
    for (;;) {
        std::vector<RecordedEntry> entries = store.Entries(kAtOnce, before);
        for (RecordedEntry& entry : entries) {
            if (entry.number <= number) return all;
            before = entry.number;
            all.push_back(std::move(entry));
        }
        if (entries.empty()) return all;
    }
}

}  // namespace ZET::Deploy
