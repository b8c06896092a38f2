#ifndef ZET_LIST_FILE_H
#define ZET_LIST_FILE_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "zet/ZETProblem.h"

namespace ZET::Deploy {

constexpr std::size_t kMostBytesOfList = std::size_t{16} * 1024 * 1024;

/// The text of a list, one byte more than a list may have at most. One that cannot be read, or that others
/// may write while root runs, is a `Failure`, whose remedy is that of a shipped list or of the host's own.
/// Never waits, whatever the path leads to.
std::string ReadListFile(const std::string& file, bool isShipped);

/// The first thing in the text that keeps it from being parsed: bytes that are no text, or more of something
/// than a parser can take.
std::optional<Problem> FormProblem(const std::string& file, std::string_view text);

}  // namespace ZET::Deploy

#endif
