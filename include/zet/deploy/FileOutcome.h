#ifndef ZET_DEPLOY_FILE_OUTCOME_H
#define ZET_DEPLOY_FILE_OUTCOME_H

#include <sys/types.h>

#include <string>
#include <vector>

#include "zet/ZETApi.h"

namespace ZET::Deploy {

/// The properties of a file other than its contents. A symbolic link counts as itself.
struct ZET_API FileState {
    bool exists = false;
    mode_t mode = 0;  ///< the whole mode word
    uid_t owner = 0;
    gid_t group = 0;
    nlink_t links = 0;

    bool IsRegular() const;
};

/// The difference of two texts as far as the user may see it; empty if it is not wanted.
struct ZET_API ShownDiff {
    std::string text;                 ///< unified
    std::vector<std::string> places;  ///< the hidden places: "FILE: lines 3-5 changed"
    std::string excuse;               ///< why it is hidden; empty if it is not
    bool isPrivate = false;           ///< the text is hidden, or would be

    void Append(ShownDiff other);
};

/// What happened to a file, or would happen to it.
struct FileOutcome {
    enum class Result { Unchanged, Created, Changed, Reserved, Restored, Forgotten, Removed, Kept, Failed };

    std::string file;  ///< as the caller gave it
    std::string path;  ///< of the real file, links followed
    Result result = Result::Unchanged;
    FileState before;
    FileState after;
    std::string reserve;       ///< the reserve that the file has afterwards; empty if none
    std::string remark;        ///< a remark for the user, shown after the result; empty if none
    ShownDiff diff;            ///< set if diffs are wanted
    std::string templateName;  ///< set for a target of the list; else empty
    bool isEdited = false;     ///< somebody else changed the target since the last commit
    bool isMerged = false;     ///< those changes were merged into the new text

    /// Whether the file is another one now, or would be. One that could not be put back is none.
    bool IsChange() const {
        return result != Result::Unchanged && result != Result::Kept && result != Result::Failed;
    }
};

/// "unchanged", "created", ...
ZET_API const char* NameOf(FileOutcome::Result result);

}  // namespace ZET::Deploy

#endif
