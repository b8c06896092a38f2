#ifndef ZET_STORE_COMPRESSION_H
#define ZET_STORE_COMPRESSION_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace ZET::Deploy {

/// The text as one zstd frame that has its size and a checksum. A short one is not compressed.
std::string Compressed(std::string_view text);

/// The text of such a frame, which is `size` bytes long; none when the frame was damaged.
std::optional<std::string> Expanded(std::string_view frame, std::size_t size);

/// Whether such a frame is that of the text, of which it has the size; none when it was damaged.
std::optional<bool> IsFrameOf(std::string_view frame, std::string_view text);

}  // namespace ZET::Deploy

#endif
