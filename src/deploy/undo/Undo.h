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
    std::vector<Problem> problems;        ///< where there are any, nothing was changed
    std::int64_t undone = 0;              ///< the entry that was taken back, or gone back to
    std::optional<std::int64_t> further;  ///< the one before it that can be taken back; none: there is none
    std::optional<std::int64_t> entry;    ///< the one that was made; none: none was
    bool isChanged = false;               ///< something was, or would be, put back
    bool isKept = false;                  ///< something stays as somebody edited it
};

/// Puts back what an entry replaced, whole or nothing. Each file is told to the observer, and so are the
/// services to restart. A number that is no entry is a `UsageError`.
UndoResult Undo(Deployment& product, const UndoOptions& options);

/// Puts back what all entries after one replaced, of both roles: targets, edits, working copies of templates
/// and the main file are as they were right after it.
UndoResult RollBackTo(Deployment& product, std::int64_t entry, const RollBackToOptions& options);

}  // namespace ZET::Deploy

#endif
