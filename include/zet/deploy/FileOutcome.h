#ifndef ZET_DEPLOY_FILE_OUTCOME_H
#define ZET_DEPLOY_FILE_OUTCOME_H

#include <sys/types.h>

#include <string>
#include <vector>

#include "zet/ZETApi.h"

namespace ZET::Deploy {

/// What a file is beside its bytes. A symbolic link counts as itself.
struct ZET_API FileState {
    bool exists = false;
    mode_t mode = 0;  ///< the whole mode word
    uid_t owner = 0;
    gid_t group = 0;
    nlink_t links = 0;

    bool IsRegular() const;
};

/// The difference of two texts as far as the reader is to see it; empty when it is not wanted.
struct ZET_API ShownDiff {
    std::string text;                 ///< unified
    std::vector<std::string> places;  ///< of what is hidden: "FILE: lines 3-5 changed"
    std::string excuse;               ///< why it is hidden; empty: it is not
    bool isPrivate = false;           ///< it is, or would be, hidden

    void Append(ShownDiff other);
};

/// What happened to a file, or would happen to it.
struct FileOutcome {
    enum class Result { Unchanged, Created, Changed, Reserved, Restored, Forgotten, Removed, Kept, Failed };

    std::string file;  ///< as the caller wrote it
    std::string path;  ///< of the real file, links followed
    Result result = Result::Unchanged;
    FileState before;
    FileState after;
    std::string reserve;       ///< the reserve that the file then has; empty: none
    std::string remark;        ///< for the reader, after the result; empty: none
    ShownDiff diff;            ///< where it is wanted
    std::string templateName;  ///< of a target; empty: it is none that the list has
    bool isEdited = false;     ///< somebody else changed the target since the last commit
    bool isMerged = false;     ///< what somebody else changed in it is in the text that it then has, too

    /// Whether the file is another one now, or would be. One that could not be put back is none.
    bool IsChange() const {
        return result != Result::Unchanged && result != Result::Kept && result != Result::Failed;
    }
};

/// "unchanged", "created", ...
ZET_API const char* NameOf(FileOutcome::Result result);

}  // namespace ZET::Deploy

#endif
