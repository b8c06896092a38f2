#ifndef ZET_STORE_SEALED_FRAME_H
#define ZET_STORE_SEALED_FRAME_H

#include <optional>
#include <string>
#include <string_view>

/// A frame of a text or of a delta after a checksum of its bytes. So it is known without expanding it that a
/// text is sound, and no other text is made from one that is not.
namespace ZET::Deploy {

std::string SealedFrame(std::string_view frame);

/// The frame in it, in place, or the bytes themselves if they were never sealed; none if it was damaged.
std::optional<std::string_view> FrameIn(std::string_view kept);

/// The same for bytes that prove to be as they were written: a sealed frame, or a plain one. None for others,
/// although they may be sound, too.
std::optional<std::string_view> SoundFrameIn(std::string_view kept);

}  // namespace ZET::Deploy

#endif
