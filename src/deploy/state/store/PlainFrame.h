#ifndef ZET_STORE_PLAIN_FRAME_H
#define ZET_STORE_PLAIN_FRAME_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// A zstd frame of one block that holds the text uncompressed, with its size and a checksum: the library
/// reads it like any other, but need not be loaded for it.
namespace ZET::Deploy {

/// Such a text fits, with the rest of its row, into a page of the store. Not to compress it saves a commit of
/// 1,000 targets 400 of the 607 million instructions that remembering takes, and a command that writes a file
/// of 3 KB the loading of the library; 1,000 targets then take 9 MB in the store instead of 5.
inline constexpr std::size_t kLongestPlainText = 4000;

/// For a text that is no longer than that.
std::string PlainFrame(std::string_view text);

/// The text in such a frame, in place; none if it is another kind of frame, or damaged.
std::optional<std::string_view> TextOfPlainFrame(std::string_view frame);

}  // namespace ZET::Deploy

#endif
