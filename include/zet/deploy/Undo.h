#ifndef ZET_DEPLOY_UNDO_H
#define ZET_DEPLOY_UNDO_H

#include <cstdint>

#include "zet/ZETApi.h"
#include "zet/deploy/Outcome.h"
#include "zet/deploy/Product.h"
#include "zet/deploy/UndoOptions.h"

namespace ZET::Deploy {

/// Puts back what an entry of the history replaced: to the byte, mode, owner, ACL and the user's attributes,
/// with what stands beside the files, and what was known of them. Whole or nothing: what keeps one file from
/// it is a `Failure` that lists all such files. A number that is no entry is a `UsageError`. It is itself an
/// entry, so that undoing twice is as if nothing had been done.
ZET_API Outcome Undo(Product& product, const UndoOptions& options = UndoOptions());

/// The same of all entries after that one: targets, edits, working copies of templates and the main file are,
/// for both roles, as they were right after it.
ZET_API Outcome RollBackTo(Product& product, std::int64_t entry,
                           const RollBackToOptions& options = RollBackToOptions());

}  // namespace ZET::Deploy

#endif
