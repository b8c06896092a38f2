#ifndef ZET_STAGED_FILE_H
#define ZET_STAGED_FILE_H

#include <sys/types.h>

#include <string>
#include <string_view>

namespace ZET::Deploy {

/// Writes a new file of that mode, or over a former one of this user's, in a directory of the product's.
void WriteStagedFile(const std::string& path, std::string_view bytes, mode_t mode);

/// Copies a regular file into a private directory, with its mode and, where this user may give it away, its
/// owner.
void CopyIntoStaging(const std::string& from, const std::string& to);

/// Gives a file in a private directory an owner and a group, as far as this user may.
void GiveStagedFile(const std::string& path, uid_t owner, gid_t group);

}  // namespace ZET::Deploy

#endif
