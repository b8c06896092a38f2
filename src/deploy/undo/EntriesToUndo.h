#ifndef ZET_ENTRIES_TO_UNDO_H
#define ZET_ENTRIES_TO_UNDO_H

#include <cstdint>
#include <optional>
#include <vector>

#include "deploy/state/store/Store.h"
#include "deploy/undo/Undo.h"

namespace ZET::Deploy {

/// The newest entry before that number that can be taken back. What is open was cut short, which the next run
/// that writes tells; a trial takes it as it is.
std::optional<RecordedEntry> NewestBefore(Store& store, std::optional<std::int64_t> before, bool isTrial);

RecordedEntry EntryToUndo(Store& store, const UndoOptions& options, bool isTrial);

/// From the newest on.
std::vector<RecordedEntry> EntriesAfter(Store& store, std::int64_t number);

/// Without what another entry has written since: the status tells when the last commit was.
std::vector<RecordedFile> FilesToUndo(Store& store, std::int64_t number);

}  // namespace ZET::Deploy

#endif
