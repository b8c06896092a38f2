#ifndef ZET_LINE_FEED_H
#define ZET_LINE_FEED_H

#include <bit>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace ZET {

/// Where the first line feed is, or `npos`. Most lines are short, so that a call of the library would take as
/// long as the search.
inline std::size_t FindLineFeed(std::string_view text) {
    std::size_t position = 0;
#ifdef __SSE2__
    using Block = char __attribute__((vector_size(16)));
    constexpr std::size_t kShortLine = 8 * sizeof(Block);
    for (; position < kShortLine && text.size() - position >= sizeof(Block); position += sizeof(Block)) {
        Block block;
        std::memcpy(&block, text.data() + position, sizeof block);
        const auto found = static_cast<unsigned>(__builtin_ia32_pmovmskb128(Block(block == '\n')));
        if (found != 0) return position + static_cast<std::size_t>(std::countr_zero(found));
    }
#endif
    return text.find('\n', position);
}

}  // namespace ZET

#endif
