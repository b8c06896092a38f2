#ifndef ZET_LISTED_EDIT_DIFFS_H
#define ZET_LISTED_EDIT_DIFFS_H

#include <vector>

#include "deploy/host/Staging.h"
#include "deploy/state/KnownFiles.h"
#include "deploy/targets/Deployment.h"
#include "zet/ZETProblem.h"
#include "zet/deploy/Status.h"

namespace ZET::Deploy {

/// Gives the last state of each file that is not in sync the diff of what a commit would make of the file.
/// Returns what keeps edits from being made.
std::vector<Problem> AddDiffsOfFiles(Deployment& product, const KnownFiles& known, const Staging& staging,
                                     std::vector<ListedEditState>& states);

}  // namespace ZET::Deploy

#endif
