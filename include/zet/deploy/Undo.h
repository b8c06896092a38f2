#ifndef ZET_DEPLOY_UNDO_H
#define ZET_DEPLOY_UNDO_H

#include <cstdint>

#include "zet/ZETApi.h"
#include "zet/deploy/Outcome.h"
#include "zet/deploy/Product.h"
#include "zet/deploy/UndoOptions.h"

namespace ZET::Deploy {

/// Restores what an entry of the history replaced: bytes, mode, owner, ACL and user attributes, the files'
/// companions, and what was recorded about them. All or nothing: if files cannot be put back, a `Failure`
/// lists them all. An unknown entry number is a `UsageError`. The undo is itself an entry, so undoing twice
/// changes nothing.
ZET_API Outcome Undo(Product& product, const UndoOptions& options = UndoOptions());

/// Undoes all entries after `entry`: for both roles, targets, edits, working copies of templates and the main
/// file are as they were right after it.
ZET_API Outcome RollBackTo(Product& product, std::int64_t entry,
                           const RollBackToOptions& options = RollBackToOptions());

}  // namespace ZET::Deploy

#endif
