#include "deploy/state/store/SealedFrame.h"

#include <cstddef>
#include <cstdint>

#include "deploy/state/store/Digest.h"
#include "deploy/state/store/PlainFrame.h"

namespace ZET::Deploy {

namespace {

/// No frame of a text or of a delta begins so.
constexpr std::string_view kMagicOfSealed = "ZETC";
constexpr std::size_t kSizeOfSeal = sizeof(std::int64_t);

/// Little-endian on every host.
std::string BytesOfSeal(std::string_view frame) {
    const auto seal = static_cast<std::uint64_t>(SealOf(frame));
    std::string bytes;
    for (std::size_t byte = 0; byte < kSizeOfSeal; ++byte)
        bytes += static_cast<char>(seal >> (8 * byte));
    return bytes;
}

}  // namespace

std::string SealedFrame(std::string_view frame) {
    return std::string(kMagicOfSealed).append(BytesOfSeal(frame)).append(frame);
}

std::optional<std::string_view> FrameIn(std::string_view kept) {
    if (!kept.starts_with(kMagicOfSealed)) return kept;
    kept.remove_prefix(kMagicOfSealed.size());
    if (kept.size() < kSizeOfSeal) return std::nullopt;
    const std::string_view frame = kept.substr(kSizeOfSeal);
    return kept.starts_with(BytesOfSeal(frame)) ? std::optional(frame) : std::nullopt;
}

std::optional<std::string_view> SoundFrameIn(std::string_view kept) {
    return kept.starts_with(kMagicOfSealed) || TextOfPlainFrame(kept) ? FrameIn(kept) : std::nullopt;
}

}  // namespace ZET::Deploy
