#ifndef ZET_ZETFILES_H
#define ZET_ZETFILES_H

#include <string>

/// The file helpers that everything the module does to a companion or a target goes through. Each failure is
/// an `EZETError` that names the path and the reason; after it, nothing has changed under the names given.
/// The exception is a disk that refuses to sync: the change may be there then, but it may not outlive a
/// crash. A path that is empty or holds a NUL byte is an `EZETCheckError`.
namespace ZET {

/// Creates an empty file that all may read and write, as far as the process's umask lets them; an existing
/// regular file is emptied and keeps its mode. A last link is not followed but an error.
__attribute__((visibility("default"))) void CreateFile(const std::string& path);

/// Removes the file, of a symbolic link the link; one that is not there is an error.
__attribute__((visibility("default"))) void RemoveFile(const std::string& path);

/// Renames, replacing `to`. The bytes of `from` are durable before the name changes. A regular file `from`
/// that is `to` with ".tmp" added is its new text: it takes over owner, group, access list and user
/// attributes of the regular file `to` or, where that is not there, of `to` with ".before_zet" added.
__attribute__((visibility("default"))) void RenameFile(const std::string& from, const std::string& to);

/// Whether the path exists; a symbolic link counts as itself, wherever it leads. Not being able to tell is an
/// error.
__attribute__((visibility("default"))) bool IsFileExist(const std::string& path);

/// Copies the regular file `from` (a last link is followed) with its mode, owner and attributes to `to`,
/// replacing it: all or nothing. The copy is made as `to` with ".tmp" added, where a left-over regular file
/// is replaced, and anything else, or one with a second name, is an error.
__attribute__((visibility("default"))) void CopyFile(const std::string& from, const std::string& to);

}  // namespace ZET

#endif
