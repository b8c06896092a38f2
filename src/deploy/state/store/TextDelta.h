#ifndef ZET_STORE_TEXT_DELTA_H
#define ZET_STORE_TEXT_DELTA_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ZET::Deploy {

/// A text as what it has of another one, its base, and what it has not. An edit of one line takes a row
/// instead of the 45 pages of a compressed text of 350 KB, and spares the compression, which is a quarter of
/// what it costs to remember a set in it.
struct TextDelta {
    /// Bytes of its own, or where it has none, bytes of the base.
    struct Piece {
        std::string own;
        std::size_t offset = 0;
        std::size_t length = 0;
    };

    std::int64_t base = 0;  ///< the number of the text, which is kept whole
    std::int64_t seal = 0;  ///< of the text that is made
    std::vector<Piece> pieces;
};

/// The base itself, or a text that is not kept yet, as the one that it was made of is.
TextDelta DeltaOfWhole(std::int64_t base, std::size_t size);

/// The text by the base of the one that it was made from, which is `former` and has this delta; none when
/// more than a row's worth of it is not in the base.
std::optional<TextDelta> DeltaFrom(const TextDelta& delta, std::string_view former, std::string_view text);

std::string FrameOf(const TextDelta& delta);

/// Whether the frame is one of a delta, and no compressed text.
bool IsFrameOfDelta(std::string_view frame);

/// None when it was damaged.
std::optional<TextDelta> DeltaOfFrame(std::string_view frame);

/// The text, which is `size` bytes long; none when the delta or the base was damaged.
std::optional<std::string> Made(const TextDelta& delta, std::string_view base, std::size_t size);

}  // namespace ZET::Deploy

#endif
