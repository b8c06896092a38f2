#ifndef ZET_FILE_BYTES_H
#define ZET_FILE_BYTES_H

#include <sys/stat.h>

#include <cstddef>
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

/// A `Failure` when the name, by which nothing is found, is a link.
void RefuseLinkToNothing(const std::string& name);

/// The status of one that was opened to be read. The same `Failure`, as `errno` says where it was not opened.
struct stat StatusOfReadable(int descriptor, const std::string& path);

/// Whether two regular files hold the same bytes.
bool HaveSameBytes(const std::string& one, const std::string& other);

/// Whether a regular file holds these bytes and no more.
bool HoldsBytes(const std::string& path, std::string_view bytes);

/// The same of one that is open, from its beginning on; where it is read otherwise stays as it is.
bool HoldsBytes(int descriptor, const std::string& path, std::string_view bytes);

}  // namespace ZET::Deploy

#endif
