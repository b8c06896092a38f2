#ifndef ZET_ZETFILES_H
#define ZET_ZETFILES_H

#include <string>

/// The file helpers that everything the module does to a companion or a target goes through. Each failure is
/// an `EZETError` that names the path and the reason; after it, nothing has changed under the names given.
/// The exception is a disk that refuses to sync: the change may be there then, but it may not outlive a
/// crash.
namespace ZET {

/// Creates an empty file; an existing regular file is emptied.
__attribute__((visibility("default"))) void CreateFile(const std::string& path);

/// Removes the file; one that is not there is an error.
__attribute__((visibility("default"))) void RemoveFile(const std::string& path);

/// Renames, replacing `to`. The bytes of `from` are durable before the name changes.
__attribute__((visibility("default"))) void RenameFile(const std::string& from, const std::string& to);

/// Whether the path exists; a symbolic link counts as itself, wherever it leads. Not being able to tell is an
/// error.
__attribute__((visibility("default"))) bool IsFileExist(const std::string& path);

/// Copies the contents of the regular file `from` to `to`, replacing it: all or nothing.
__attribute__((visibility("default"))) void CopyFile(const std::string& from, const std::string& to);

}  // namespace ZET

#endif
