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
    std::string base;    ///< what `now` was made of by others
    std::string wanted;  ///< another one that was made of the base
};

/// The file that they are for.
struct FileToMerge {
    std::string path;
    std::string otherWay;  ///< the remedy where they cannot be merged: "--force puts back ..."
};

struct MergedFile {
    std::string text;
    std::vector<Problem> conflicts;  ///< with file and line; then there is no text
};

/// The wanted text with what others changed in the file. Notices take no part: the file gets that of
/// the wanted text. Texts that cannot be merged (NUL bytes, mixed line ends) are a `Failure`.
MergedFile MergeFile(const TextsToMerge& texts, const FileToMerge& file);

/// The wanted mode, owner and attributes with those that others changed.
RecordedState MergedAttributes(const RecordedState& now, const RecordedState& base,
                               const RecordedState& wanted);

}  // namespace ZET::Deploy

#endif
