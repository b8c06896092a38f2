#ifndef ZET_UNDO_H
#define ZET_UNDO_H

#include <cstdint>
#include <optional>
#include <vector>

#include "deploy/targets/Deployment.h"
#include "zet/ZETProblem.h"
#include "zet/deploy/UndoOptions.h"

namespace ZET::Deploy {

/// What became of files that were to go back.
struct UndoResult {
    std::vector<Problem> problems;        ///< if there are any, nothing was changed
    std::int64_t undone = 0;              ///< the entry that was taken back, or gone back to
    std::optional<std::int64_t> further;  ///< the next older entry to take back; none: there is none
    std::optional<std::int64_t> entry;    ///< the entry that this made; none if it made none
    bool isChanged = false;               ///< something was put back, or would be in a dry run
    bool isKept = false;                  ///< something stays as somebody edited it
};

/// Puts back all that an entry replaced, or nothing if there are problems. Reports each file and the services
/// to restart to the observer. Throws a `UsageError` for a number that is no entry.
UndoResult Undo(Deployment& product, const UndoOptions& options);

/// Puts back what all entries after `entry` replaced, of both roles: targets, edits, working copies of
/// templates and the main file are then as they were right after it.
UndoResult RollBackTo(Deployment& product, std::int64_t entry, const RollBackToOptions& options);

}  // namespace ZET::Deploy

#endif
