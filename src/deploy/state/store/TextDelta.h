#ifndef ZET_STORE_TEXT_DELTA_H
#define ZET_STORE_TEXT_DELTA_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ZET::Deploy {

/// A text as pieces of another one, its base, and of bytes of its own. An edit of one line then takes a row
/// instead of the 45 pages of a compressed text of 350 KB, and saves the compression, a quarter of what it
/// costs to record such an edit.
struct TextDelta {
    /// Bytes of its own or, if it has none, bytes of the base.
    struct Piece {
        std::string own;
        std::size_t offset = 0;
        std::size_t length = 0;
    };

    std::int64_t base = 0;  ///< number of that text, which is kept whole
    std::int64_t seal = 0;  ///< of the text that is made
    std::vector<Piece> pieces;
};

/// The delta of the base itself: one piece, which is all of it.
TextDelta DeltaOfWhole(std::int64_t base, std::size_t size);

/// The delta of `text` by the base of `former`, which has the delta `delta`; none if more of the text than
/// fits into a row is not in the base.
std::optional<TextDelta> DeltaFrom(const TextDelta& delta, std::string_view former, std::string_view text);

std::string FrameOf(const TextDelta& delta);

/// Whether the frame is that of a delta, and not a compressed text.
bool IsFrameOfDelta(std::string_view frame);

/// None if the frame is damaged.
std::optional<TextDelta> DeltaOfFrame(std::string_view frame);

/// The text that the delta makes, which is `size` bytes long; none if the delta or the base is damaged.
std::optional<std::string> Made(const TextDelta& delta, std::string_view base, std::size_t size);

}  // namespace ZET::Deploy

#endif
