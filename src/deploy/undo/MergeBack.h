#ifndef ZET_MERGE_BACK_H
#define ZET_MERGE_BACK_H

#include <vector>

#include "deploy/state/CapturedFile.h"
#include "deploy/state/MergedFile.h"
#include "deploy/state/store/Store.h"
#include "deploy/undo/RecordedChanges.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// A file without what the entries did to it, but with what others did.
struct MergedBack {
    CapturedFile file;
    std::vector<Problem> problems;  ///< if there are any, `file` must not be used
};

/// Pass `keepsNotice` if the file holds more of the product's work than is taken out: its notice stays then.
MergedBack MergeBack(Store& store, const RecordedChange& change, const CapturedFile& now,
                     const FileToMerge& file, bool keepsNotice);

}  // namespace ZET::Deploy

#endif
