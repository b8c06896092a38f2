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

/// Whether the path can be that of a file. The system would take one that holds a NUL byte for the shorter
/// name of another file.
bool IsFileName(const std::string& path);

/// Opens for reading; never waits, whatever the path leads to.
Descriptor OpenForReading(const std::string& path);

/// Finds whose the regular file is that stands at the path itself: nobody's when there is none. False when
/// that cannot be told.
///
/// A link is not followed. What is renamed onto it takes the place of the link and not of the file that it
/// leads to; whoever may plant a link could lead it to his own file and have a text given to him, or to
/// somebody else's and have him run what he did not write.
bool FindOwner(const std::string& path, std::optional<Owner>& owner);

/// Opens for writing a file that is to be emptied: a new one, or a left-over of a save that was cut short.
/// Not open when the path leads to anything but a regular file of that one name, nor when a left-over belongs
/// to anybody but the caller and the owner of the file that it is for: whoever made it may hold it open, and
/// would write into the finished file. Nothing is changed then.
Descriptor OpenTemporary(const std::string& path, const std::optional<Owner>& targetOwner);

/// Opens for writing and empties a regular file, a new one with the default permissions; a link is followed.
/// Not open when the path leads to anything else; never waits.
Descriptor OpenForWriting(const std::string& path);

/// Appends what the file holds; false when it is no regular file (`status` is its status) or reading breaks
/// off.
bool ReadAll(const Descriptor& file, const struct stat& status, Buffer& bytes);

/// False when the file could not be given to that user and group. It gets the group all the same where it
/// can: whom the mode lets in as the group stays so.
bool SetOwner(const Descriptor& file, const Owner& owner);

/// Changes the permission bits to those of `mode`, whatever the process's file-creation mask is.
void SetMode(const Descriptor& file, mode_t mode);

}  // namespace ZET

#endif
