#ifndef ZET_FILE_BYTES_H
#define ZET_FILE_BYTES_H

#include <sys/stat.h>

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "posix/Descriptor.h"

namespace ZET::Deploy {

/// Returns the whole text of a regular file, following links. Never blocks, whatever the path leads to.
/// Throws a `Failure` that names the path if it cannot be read.
std::string ReadFileBytes(const std::string& path);

/// The same, but leaves the file open in `opened`.
std::string ReadFileBytes(const std::string& path, Descriptor& opened);

/// The same, with the mode of the file, which takes no look of its own.
std::string ReadFileBytes(const std::string& path, mode_t& mode);

/// Returns the beginning of the same text, at most `size` bytes.
std::string ReadFileHead(const std::string& path, std::size_t size);

/// Hands the same text to `take` in pieces of whole lines with their line feeds; the last line may lack its
/// own. The memory used grows with the longest line, not with the file.
void ReadChunks(const std::string& path, const std::function<void(std::string_view lines)>& take);

/// Throws a `Failure` unless the path leads to a regular file that can be read.
void RequireReadableFile(const std::string& path);

/// Throws a `Failure` if the name, which leads to no file, is a link.
void RefuseLinkToNothing(const std::string& name);

/// The status of a file that was opened for reading. Throws the same `Failure`; if the file could not be
/// opened, `errno` must still say why.
struct stat StatusOfReadable(int descriptor, const std::string& path);

/// Whether two regular files hold the same bytes.
bool HaveSameBytes(const std::string& one, const std::string& other);

/// Whether a regular file holds these bytes and no more.
bool HoldsBytes(const std::string& path, std::string_view bytes);

/// The same for an open file, from its beginning; its read position does not move.
bool HoldsBytes(int descriptor, const std::string& path, std::string_view bytes);

}  // namespace ZET::Deploy

#endif
