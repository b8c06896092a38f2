#ifndef ZET_STORE_COMPRESSION_H
#define ZET_STORE_COMPRESSION_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace ZET::Deploy {

/// The text as one zstd frame with its size and a checksum. A short text is not compressed.
std::string Compressed(std::string_view text);

/// The text in such a frame, which is `size` bytes long; none if the frame is damaged.
std::optional<std::string> Expanded(std::string_view frame, std::size_t size);

/// Whether such a frame holds this text, whose size it has; none if the frame is damaged.
std::optional<bool> IsFrameOf(std::string_view frame, std::string_view text);

}  // namespace ZET::Deploy

#endif
