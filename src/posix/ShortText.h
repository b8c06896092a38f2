#ifndef ZET_POSIX_SHORT_TEXT_H
#define ZET_POSIX_SHORT_TEXT_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

/// Operations on short texts that are so frequent that a call of the C library would take longer than its
/// work.
namespace ZET {

/// The first position of a byte that is likely near the begin, or `npos`. A call of the library would cost as
/// much as searching a short line.
inline std::size_t FindNear(std::string_view text, char byte) {
    std::size_t position = 0;
#ifdef __SSE2__
    using Block = char __attribute__((vector_size(16)));
    constexpr std::size_t kNear = 8 * sizeof(Block);
    for (; position < kNear && text.size() - position >= sizeof(Block); position += sizeof(Block)) {
        Block block;
        std::memcpy(&block, text.data() + position, sizeof block);
        const auto found = static_cast<unsigned>(__builtin_ia32_pmovmskb128(Block(block == byte)));
        if (found != 0) return position + static_cast<std::size_t>(std::countr_zero(found));
    }
#endif
    return text.find(byte, position);
}

/// Copies a text; without a call if it has 8 to 64 bytes, as most lines, words and values do.
inline void CopyNear(char* to, std::string_view from) {
    const std::size_t size = from.size();
    const auto copy = [&](std::size_t at, auto part) {
        std::memcpy(&part, from.data() + at, sizeof part);
        std::memcpy(to + at, &part, sizeof part);
    };
    // Copies from both ends; the parts may overlap.
    const auto copyEnds = [&](std::size_t at, auto part) {
        copy(at, part);
        copy(size - at - sizeof part, part);
    };
    struct Part {
        std::uint64_t words[2];
    };
    if (size >= sizeof(Part) && size <= 4 * sizeof(Part)) {
        copyEnds(0, Part());
        if (size > 2 * sizeof(Part)) copyEnds(sizeof(Part), Part());
    } else if (size >= sizeof(std::uint64_t) && size < sizeof(Part)) {
        copyEnds(0, std::uint64_t());
    } else if (size > 0) {
        std::memcpy(to, from.data(), size);
    }
}

/// Texts up to this size are compared without a call.
constexpr std::size_t kMostOfShort = 72;

/// Whether two texts are equal; neither may be longer than `kMostOfShort`.
inline bool IsSameShort(std::string_view one, std::string_view other) {
    const auto word = [](std::string_view text, std::size_t place) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, text.data() + place, sizeof bytes);
        return bytes;
    };
    constexpr std::size_t kWord = sizeof(std::uint64_t);
    if (one.size() != other.size()) return false;
    if (one.size() < kWord) {
        for (std::size_t at = 0; at < one.size(); ++at)
            if (one[at] != other[at]) return false;
        return true;
    }
    const std::size_t last = one.size() - kWord;
    if (word(one, last) != word(other, last)) return false;
    for (std::size_t at = 0; at < last; at += kWord)
        if (word(one, at) != word(other, at)) return false;
    return true;
}

/// Whether two texts are equal; optimised for texts too short to be worth a call.
inline bool IsSame(std::string_view one, std::string_view other) {
    if (one.size() <= kMostOfShort) return IsSameShort(one, other);
    return one == other;
}

}  // namespace ZET

#endif
