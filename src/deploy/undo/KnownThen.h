#ifndef ZET_KNOWN_THEN_H
#define ZET_KNOWN_THEN_H

#include <optional>
#include <set>
#include <string>

#include "deploy/state/CapturedFile.h"
#include "deploy/state/store/Store.h"
#include "deploy/undo/RecordedChanges.h"

namespace ZET::Deploy {

/// What the history is to know of a file after an undo.
struct KnownThen {
    FileKind kind = FileKind::Original;
    Knowledge knowledge{};
    std::optional<RecordedState> knownAs{};  ///< the state it is known in, where the file has another text
    std::optional<std::string> base{};       ///< the text of `knowledge.base`, where the store lacks it
};

/// For a file that goes back, whether its text changes or not. If only one entry is taken back, only what
/// that entry itself changed of the roles and lines is.
KnownThen KnownOnceBack(Store& store, const RecordedChange& change, const std::optional<KnownFile>& now,
                        bool isTextBack);

/// The roles that have the file committed then.
std::set<Role> CommittersOf(Store& store, const KnownThen& then);

/// For a file that a merge leaves to newer entries.
KnownThen KnownAsNow(const KnownFile& now, const CapturedFile& file);

/// For a file that stays because somebody wrote it between two entries: known as the product left it before
/// that, so that it counts as edited.
KnownThen KnownAsEditedBetween(const RecordedChange& change, const KnownFile& now);

}  // namespace ZET::Deploy

#endif
