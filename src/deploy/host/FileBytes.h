#ifndef ZET_FILE_BYTES_H
#define ZET_FILE_BYTES_H

#include <sys/stat.h>
#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "posix/Descriptor.h"

namespace ZET::Deploy {

/// The whole text of a regular file, links followed. Never waits, whatever the path leads to; what cannot be
/// read is a `Failure` that names it.
std::string ReadFileBytes(const std::string& path);

/// The same, and leaves the file open.
std::string ReadFileBytes(const std::string& path, Descriptor& opened);

/// The beginning of the same text, as much as `size`.
std::string ReadFileHead(const std::string& path, std::size_t size);

/// Hands the same text to `take` in pieces of whole lines with their line feeds, which the last one may lack;
/// not much more than the longest line is in memory.
void ReadChunks(const std::string& path, const std::function<void(std::string_view lines)>& take);

/// A `Failure` unless the path leads to a regular file that can be read.
void RequireReadableFile(const std::string& path);

/// Which of the texts that a path ever led to it leads to now: another one after each write.
struct FileVersion {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    std::int64_t changed = 0;  ///< nanoseconds

    bool operator==(const FileVersion&) const = default;
};

/// Of a real file: a link that takes its place is another version.
FileVersion VersionOf(const std::string& path);

/// Of a file that was looked at.
FileVersion VersionFrom(const struct stat& status);

/// The same of a name in a directory that is held; `path` is for the message.
FileVersion VersionIn(int directory, const std::string& name, const std::string& path);

/// Whether two regular files hold the same bytes.
bool HaveSameBytes(const std::string& one, const std::string& other);

/// Whether a regular file holds these bytes and no more.
bool HoldsBytes(const std::string& path, std::string_view bytes);

/// The same of one that is open, from its beginning on; where it is read otherwise stays as it is.
bool HoldsBytes(int descriptor, const std::string& path, std::string_view bytes);

/// The mode of a file, links followed.
mode_t ModeOf(const std::string& path);

/// Gives a file that the module wrote this mode: the module does not tell when it could not. `descriptor` is
/// open on the file, or -1 when this user cannot open it; then it is looked at by name.
void RequireMode(int descriptor, const std::string& path, mode_t mode);

/// The same of a file in a private directory, and the mode of another.
void RequireModeOf(const std::string& model, const std::string& staged);

/// Writes a new file of that mode, or over a former one of this user's, in a directory of the product's.
void WriteStagedFile(const std::string& path, std::string_view bytes, mode_t mode);

/// Copies a regular file into a private directory, with its mode and, where this user may give it away, its
/// owner.
void CopyIntoStaging(const std::string& from, const std::string& to);

/// Gives a file in a private directory an owner and a group, as far as this user may.
void GiveStagedFile(const std::string& path, uid_t owner, gid_t group);

}  // namespace ZET::Deploy

#endif
