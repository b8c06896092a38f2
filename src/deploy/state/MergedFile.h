#ifndef ZET_MERGED_FILE_H
#define ZET_MERGED_FILE_H

#include <string>
#include <vector>

#include "deploy/state/store/Records.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// Three texts of a managed file.
struct TextsToMerge {
    std::string now;
    std::string base;    ///< what others made `now` from
    std::string wanted;  ///< another text made from the base
};

/// The file whose texts they are.
struct FileToMerge {
    std::string path;
    std::string otherWay;  ///< the remedy if they cannot be merged: "--force puts back ..."
};

struct MergedFile {
    std::string text;
    std::vector<Problem> conflicts;  ///< with file and line; if there are any, there is no text
};

/// The wanted text with what others changed in the file. Notices are not merged: the file gets that of the
/// wanted text. Throws a `Failure` if the texts cannot be merged (NUL bytes, mixed line ends).
MergedFile MergeFile(const TextsToMerge& texts, const FileToMerge& file);

/// The wanted state, but with the mode, owner and attributes that others changed.
RecordedState MergedAttributes(const RecordedState& now, const RecordedState& base,
                               const RecordedState& wanted);

}  // namespace ZET::Deploy

#endif
