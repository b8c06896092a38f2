#ifndef ZET_ZETFILES_H
#define ZET_ZETFILES_H

#include <string>

#include "zet/ZETApi.h"

/// The file helpers that everything the module does to a companion or a target goes through. Each failure is
/// an `EZETError` that names the path and the reason; after it, nothing has changed under the names given.
/// The exception is a disk that refuses to sync: the change may be there then, but it may not outlive a
/// crash. A path that is empty or holds a NUL byte is an `EZETCheckError`.
namespace ZET {

/// Creates an empty file that all may read and write, as far as the process's umask lets them; an existing
/// regular file is emptied and keeps its mode. A last link is not followed but an error, and so is a file
/// with a second name.
ZET_API void CreateFile(const std::string& path);

/// Removes the file, of a symbolic link the link; one that is not there is an error.
ZET_API void RemoveFile(const std::string& path);

/// Renames, replacing `to`; of a link at either name the link. The bytes of `from` are durable before the
/// name changes, and what was put in its place meanwhile is refused. A `from` that is `to` with ".tmp" added
/// is its new text and must be a regular file with no other name: it takes over owner, group, access list and
/// user attributes of the regular file `to` or, where that is none, of `to` with ".before_zet" added, and
/// keeps its mode, but for set-user-ID and set-group-ID where its owner could not be given or `to` was a link
/// or a file with a second name. A link gives nothing: whoever may plant one could lead it to his own file.
ZET_API void RenameFile(const std::string& from, const std::string& to);

/// Whether the path exists; a symbolic link counts as itself, wherever it leads, and nothing has a name that
/// is too long. Not being able to tell is an error.
ZET_API bool IsFileExist(const std::string& path);

/// Copies the regular file `from` (a last link is followed) with its mode, owner and attributes to `to`,
/// replacing it, of a link the link: all or nothing. The copy is made under a name that nobody else has and
/// is nobody else's to read until it is complete; without set-user-ID and set-group-ID where the owner could
/// not be given, or where `from` is a link.
ZET_API void CopyFile(const std::string& from, const std::string& to);

}  // namespace ZET

#endif
