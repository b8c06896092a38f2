#ifndef ZET_STAGED_FILE_H
#define ZET_STAGED_FILE_H

#include <sys/types.h>

#include <string>
#include <string_view>

namespace ZET::Deploy {

/// Writes a file of that mode in one of the product's directories: a new one, or over a former one of this
/// user's.
void WriteStagedFile(const std::string& path, std::string_view bytes, mode_t mode);

/// Copies a regular file into a private directory, with its mode, and with its owner as far as this user may
/// give files away.
void CopyIntoStaging(const std::string& from, const std::string& to);

/// Gives a file in a private directory an owner and a group, as far as this user may.
void GiveStagedFile(const std::string& path, uid_t owner, gid_t group);

}  // namespace ZET::Deploy

#endif
