#ifndef ZET_FILE_BYTES_H
#define ZET_FILE_BYTES_H

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace ZET {

/// The whole text of a regular file, links followed. Never waits, whatever the path leads to; what cannot be
/// read is a `Failure` that names it.
std::string ReadFileBytes(const std::string& path);

/// Hands the lines of the same text to `take`, without their line feeds; of all of it, only one line at a
/// time is in memory.
void ReadLines(const std::string& path, const std::function<void(std::string_view line)>& take);

/// The same in pieces of whole lines with their line feeds, which the last one may lack.
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

/// Links followed.
FileVersion VersionOf(const std::string& path);

/// Whether two regular files hold the same bytes.
bool HaveSameBytes(const std::string& one, const std::string& other);

/// Gives a file that the module wrote the mode of another: the module does not tell when it could not.
void RequireModeOf(const std::string& model, const std::string& path);

/// Whether a file that the module wrote has become what was made in trial; its mode then is that, too.
bool HasBecome(const std::string& path, const std::string& staged);

/// Writes a new file of that mode, or over a former one, in a private directory.
void WriteStagedFile(const std::string& path, const std::string& bytes, mode_t mode);

/// Copies a regular file into a private directory, with its mode and, where this user may give it away, its
/// owner.
void CopyIntoStaging(const std::string& from, const std::string& to);

/// Gives a file in a private directory an owner and a group, as far as this user may.
void GiveStagedFile(const std::string& path, uid_t owner, gid_t group);

}  // namespace ZET

#endif
