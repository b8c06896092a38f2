#ifndef ZET_LIST_FILE_H
#define ZET_LIST_FILE_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "zet/ZETProblem.h"

namespace ZET::Deploy {

constexpr std::size_t kMostBytesOfList = std::size_t{16} * 1024 * 1024;

/// The text of a list, at most one byte longer than a list may be. Throws a `Failure` if it cannot be read,
/// or if others may write it while root runs; `isShipped` chooses the remedy. Never waits, whatever the path
/// leads to.
std::string ReadListFile(const std::string& file, bool isShipped);

/// The first thing that keeps the text from being parsed: bytes that are no text, or more of something than
/// the parser can take.
std::optional<Problem> FormProblem(const std::string& file, std::string_view text);

}  // namespace ZET::Deploy

#endif
