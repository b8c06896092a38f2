#ifndef ZET_FILE_ACCESS_H
#define ZET_FILE_ACCESS_H

#include <sys/stat.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Buffer.h"
#include "posix/Descriptor.h"

namespace ZET {

/// The user and the group that a file belongs to.
struct Owner {
    uid_t user;
    gid_t group;
    bool operator==(const Owner&) const = default;
};

inline Owner OwnerOf(const struct stat& status) {
    return {status.st_uid, status.st_gid};
}

/// Whether the path can name a file. The system would cut one with a NUL byte short and use another file.
bool IsFileName(const std::string& path);

/// Opens a file for reading; never blocks, whatever the path leads to.
Descriptor OpenForReading(const std::string& path);

/// Finds the owner of the regular file at `path`; none if there is no regular file. False if that cannot be
/// determined.
///
/// A link is not followed, since renaming onto it replaces the link, not its target. Whoever may create a
/// link could point it to their own file and become the owner of the text, or to somebody else's and have
/// them run a program that they did not write.
bool FindOwner(const std::string& path, std::optional<Owner>& owner);

/// Opens an empty temporary file for writing: a new one, or the leftover of a save that was cut short. Not
/// open, and nothing changed, if the path leads to anything but a regular file with one name, or if a
/// leftover belongs to anybody but the caller and the target's owner: its creator may hold it open and could
/// write into the finished file.
Descriptor OpenTemporary(const std::string& path, const std::optional<Owner>& targetOwner);

/// Opens a regular file for writing and empties it; a new one gets the default permissions. Follows a link.
/// Not open if the path leads to anything else; never blocks.
Descriptor OpenForWriting(const std::string& path);

/// Appends the file's contents to `bytes`. False if it is no regular file (`status` is its status), or if
/// reading fails.
bool ReadAll(const Descriptor& file, const struct stat& status, Buffer& bytes);

/// False if the owner could not be set. The group is set anyway if possible, so that its members keep the
/// access that the mode grants.
bool SetOwner(const Descriptor& file, const Owner& owner);

/// Sets the permission bits of `mode`, regardless of the process's file-creation mask.
void SetMode(const Descriptor& file, mode_t mode);

}  // namespace ZET

#endif
