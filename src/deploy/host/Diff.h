#ifndef ZET_DIFF_H
#define ZET_DIFF_H

#include <sys/types.h>

#include <string>

#include "cli/Report.h"

namespace ZET {

/// The unified diff of two files' bytes, fit for `patch -p1`: `shownPath` (without its leading "/") below
/// "a/" and "b/". A side whose file name is empty is a file that is not there. Empty when there is no
/// difference that a diff can show.
std::string UnifiedDiff(const std::string& oldFile, const std::string& newFile, const std::string& shownPath);

/// What a file is beside its bytes. A symbolic link counts as itself.
struct FileState {
    bool exists = false;
    mode_t mode = 0;  ///< the whole mode word
    uid_t owner = 0;
    gid_t group = 0;
    nlink_t links = 0;

    bool IsRegular() const;
};

/// Not being able to tell is a `Failure`.
FileState StateOf(const std::string& path);

/// The same of a name in a directory that is held; `path` is for the message.
FileState StateIn(int directory, const std::string& name, const std::string& path);

/// Whether nothing would change, but for the owner, if one took the other's place.
bool HaveSameModeAndBytes(const std::string& one, const std::string& other);

/// "mode 0644 -> 0600, owner 0:0 -> 1000:1000": what differs; all of it, without arrows, for a file that was
/// not there; empty when nothing differs or the file is going to be gone.
std::string DescribeChange(const FileState& before, const FileState& after);

/// The same for the document: mode_before, mode_after, owner_before, owner_after; null for a file that is not
/// there.
Fields ChangeFields(const FileState& before, const FileState& after);

}  // namespace ZET

#endif
