#ifndef ZET_STORE_SEALED_FRAME_H
#define ZET_STORE_SEALED_FRAME_H

#include <optional>
#include <string>
#include <string_view>

/// A frame of a text or of a delta behind a checksum of its bytes: that a text is sound is then known without
/// expanding it, and from one that is not, no other text is made.
namespace ZET::Deploy {

std::string SealedFrame(std::string_view frame);

/// The frame in it, in place, or the bytes themselves where they are none that was sealed; none when it was
/// damaged.
std::optional<std::string_view> FrameIn(std::string_view kept);

/// The same of bytes that tell that they are as they were written: a sealed frame, or a plain one. Others may
/// be sound, too.
std::optional<std::string_view> SoundFrameIn(std::string_view kept);

}  // namespace ZET::Deploy

#endif
