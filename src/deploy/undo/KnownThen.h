#ifndef ZET_KNOWN_THEN_H
#define ZET_KNOWN_THEN_H

#include <optional>
#include <set>
#include <string>

#include "deploy/state/CapturedFile.h"
#include "deploy/state/store/Store.h"
#include "deploy/undo/RecordedChanges.h"

namespace ZET::Deploy {

/// What is known of a file from now on.
struct KnownThen {
    FileKind kind = FileKind::Original;
    Knowledge knowledge{};
    std::optional<RecordedState> knownAs{};  ///< where that is another text
    std::optional<std::string> base{};       ///< of the knowledge, where the store does not have it yet
};

/// Of one that goes back, its text too or not. Where one entry alone is taken back, so is what that changed
/// of the roles, and no more.
KnownThen KnownOnceBack(Store& store, const RecordedChange& change, const std::optional<KnownFile>& now,
                        bool isTextBack);

/// The roles that have committed it then.
std::set<Role> CommittersOf(Store& store, const KnownThen& then);

/// Of one that a merge leaves to newer entries.
KnownThen KnownAsNow(const KnownFile& now, const CapturedFile& file);

/// Of one that stays since somebody wrote it between two entries: as the product had left it before that, so
/// that it counts as edited.
KnownThen KnownAsEditedBetween(const RecordedChange& change, const KnownFile& now);

}  // namespace ZET::Deploy

#endif
