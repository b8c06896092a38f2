#ifndef ZET_MERGE_BACK_H
#define ZET_MERGE_BACK_H

#include <vector>

#include "deploy/state/CapturedFile.h"
#include "deploy/state/MergedFile.h"
#include "deploy/state/store/Store.h"
#include "deploy/undo/RecordedChanges.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// A file out of which is taken what entries did, while what others did stays.
struct MergedBack {
    CapturedFile file;
    std::vector<Problem> problems;  ///< where there are any, there is no file
};

/// With `keepsNotice`, the file has more of the product's than what is taken out.
MergedBack MergeBack(Store& store, const RecordedChange& change, const CapturedFile& now,
                     const FileToMerge& file, bool keepsNotice);

}  // namespace ZET::Deploy

#endif
