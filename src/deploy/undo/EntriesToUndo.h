#ifndef ZET_ENTRIES_TO_UNDO_H
#define ZET_ENTRIES_TO_UNDO_H

#include <cstdint>
#include <optional>
#include <vector>

#include "deploy/state/store/Store.h"
#include "deploy/undo/Undo.h"

namespace ZET::Deploy {

/// The newest entry before that number that can be taken back. An open entry was cut short, which the next
/// run that writes settles and reports, so only a trial may return it.
std::optional<RecordedEntry> NewestBefore(Store& store, std::optional<std::int64_t> before, bool isTrial);

RecordedEntry EntryToUndo(Store& store, const UndoOptions& options, bool isTrial);

/// From the newest to the oldest.
std::vector<RecordedEntry> EntriesAfter(Store& store, std::int64_t number);

/// Leaves out a status file that a later entry has written, since the status says when the last commit was.
std::vector<RecordedFile> FilesToUndo(Store& store, std::int64_t number);

}  // namespace ZET::Deploy

#endif
