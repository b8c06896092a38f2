#ifndef ZET_ZETFILES_H
#define ZET_ZETFILES_H

#include <string>

#include "zet/ZETApi.h"

/// The file helpers through which the module does everything to a companion or a target. Each failure is an
/// `EZETError` that names the path and the reason; nothing has then changed under the given names. The one
/// exception is a disk that refuses to sync: the change may have been made, but may not outlive a crash. A
/// path that is empty or contains a NUL byte is an `EZETCheckError`.
namespace ZET {

/// Creates an empty file that everybody may read and write, as far as the process's umask allows. An existing
/// regular file is emptied and keeps its mode. A link as the last component is not followed but is an error,
/// and so is a file with a second name.
ZET_API void CreateFile(const std::string& path);

/// Removes the file, or the link itself if it is a symbolic link; a missing file is an error.
ZET_API void RemoveFile(const std::string& path);

/// Renames `from`, replacing `to`; a link at either name is renamed or replaced itself. The bytes of `from`
/// are durable before the name changes; if another file has taken its place by then, the rename is refused. A
/// `from` that is `to` with ".tmp" added is the new text of `to` and must be a regular file with no other
/// name. It takes over owner, group, access list and user attributes of the regular file `to` or, if there is
/// none, of `to` with ".before_zet" added. It keeps its mode, except for set-user-ID and set-group-ID if its
/// owner could not be set or `to` was a link or a file with a second name. Nothing is taken over from a link:
/// whoever may create one could point it to a file of their own.
ZET_API void RenameFile(const std::string& from, const std::string& to);

/// Whether the path exists. A symbolic link counts as itself, wherever it leads; a name that is too long does
/// not exist. Not being able to tell is an error.
ZET_API bool IsFileExist(const std::string& path);

/// Copies the regular file `from`, following a link, with its mode, owner and attributes to `to`, replacing a
/// file or a link there: all or nothing. The copy is made under a unique name, and nobody else may read it
/// until it is complete. It has no set-user-ID and set-group-ID if the owner could not be set, or if `from`
/// is a link.
ZET_API void CopyFile(const std::string& from, const std::string& to);

}  // namespace ZET

#endif
