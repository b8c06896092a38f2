#ifndef ZET_LINE_FEED_H
#define ZET_LINE_FEED_H

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <bit>
#include <cstddef>
#include <string_view>

namespace ZET {

/// Where the first line feed is, or `npos`. Most lines are short, so that a call of the library would take as
/// long as the search.
inline std::size_t FindLineFeed(std::string_view text) {
    std::size_t position = 0;
#ifdef __SSE2__
    constexpr std::size_t kBlock = sizeof(__m128i);
    constexpr std::size_t kShortLine = 8 * kBlock;
    const __m128i lineFeeds = _mm_set1_epi8('\n');
    for (; position < kShortLine && text.size() - position >= kBlock; position += kBlock) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + position));
        const auto found = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(block, lineFeeds)));
        if (found != 0) return position + static_cast<std::size_t>(std::countr_zero(found));
    }
#endif
    return text.find('\n', position);
}

}  // namespace ZET

#endif
