#ifndef ZET_STORE_PLAIN_FRAME_H
#define ZET_STORE_PLAIN_FRAME_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// A zstd frame of one block that holds the text as it is, with its size and a checksum: the library reads it
/// like any other, but need not be loaded for it.
namespace ZET::Deploy {

/// Together with the rest of its row, such a text fits into a page of the store, which it would not leave to
/// another one by much. One template of 3 KB: 5.3 to 5.1 ms; 1,000 targets: 338 of 607 million instructions.
inline constexpr std::size_t kLongestPlainText = 4000;

/// Of a text that is no longer than that.
std::string PlainFrame(std::string_view text);

/// The text of such a frame, in place; none when it is another one, or damaged.
std::optional<std::string_view> TextOfPlainFrame(std::string_view frame);

}  // namespace ZET::Deploy

#endif
