#ifndef ZET_POSIX_BYTE_BLOCK_H
#define ZET_POSIX_BYTE_BLOCK_H

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace ZET {

/// 64 bytes that are compared together. A call of the C library for each line would take as long as searching
/// the line.
class ByteBlock {
  public:
    static constexpr std::size_t kSize = 64;

    explicit ByteBlock(const char* bytes) { std::memcpy(m_parts, bytes, kSize); }

    /// The rest of a text that is shorter than a block, padded with zero bytes.
    explicit ByteBlock(std::string_view rest) : ByteBlock(Padded(rest).bytes) {}

    /// A block that marks the places of a byte.
    ByteBlock Where(char byte) const {
        return Each([&](std::size_t i) { return Part(m_parts[i] == byte); });
    }
    ByteBlock operator&(const ByteBlock& other) const {
        return Each([&](std::size_t i) { return m_parts[i] & other.m_parts[i]; });
    }

    /// Whether `where` marks any place, given the parts of the blocks at each of these addresses. Half the
    /// work of building a block, since nothing is stored.
    template <typename Where, typename... Bytes>
    static bool TellAny(const Where& where, const Bytes*... bytes) {
        Part all = {};
        for (std::size_t i = 0; i < kParts; ++i)
            all |= where(PartAt(bytes + i * sizeof(Part))...);
        return HighBits(all) != 0;
    }

    /// One bit for each marked place, the lowest for the first.
    std::uint64_t Places() const {
        std::uint64_t places = 0;
        for (std::size_t i = 0; i < kParts; ++i)
            places |= HighBits(m_parts[i]) << (i * sizeof(Part));
        return places;
    }

  private:
    struct Padded {
        explicit Padded(std::string_view rest) {
            if (!rest.empty()) std::memcpy(bytes, rest.data(), rest.size());
        }
        char bytes[kSize] = {};
    };

#ifdef __SSE2__
    using Part = char __attribute__((vector_size(16)));

    static std::uint64_t HighBits(const Part& part) {
        return static_cast<std::uint16_t>(__builtin_ia32_pmovmskb128(part));
    }
#else
    using Part = char __attribute__((vector_size(8)));

    static std::uint64_t HighBits(const Part& part) {
        std::uint64_t bits = 0;
        for (std::size_t i = 0; i < sizeof part; ++i)
            bits |= static_cast<std::uint64_t>(static_cast<unsigned char>(part[i]) >> 7) << i;
        return bits;
    }
#endif

    static constexpr std::size_t kParts = kSize / sizeof(Part);

    static Part PartAt(const char* bytes) {
        Part part;
        std::memcpy(&part, bytes, sizeof part);
        return part;
    }

    ByteBlock() = default;

    template <typename Of>
    static ByteBlock Each(const Of& of) {
        ByteBlock block;
        for (std::size_t i = 0; i < kParts; ++i)
            block.m_parts[i] = of(i);
        return block;
    }

    Part m_parts[kParts] = {};
};

/// The size of the leading lines that have line feeds, these included.
inline std::size_t SizeOfWholeLines(std::string_view text) {
    const void* const lineFeed = text.empty() ? nullptr : memrchr(text.data(), '\n', text.size());
    if (lineFeed == nullptr) return 0;
    return static_cast<std::size_t>(static_cast<const char*>(lineFeed) - text.data()) + 1;
}

/// The places of one byte, other than zero, in a text, in order. If they are close together, as most line
/// feeds are, a call of the C library for each would take as long as its search.
class BytePlaces {
  public:
    explicit BytePlaces(char byte) : m_byte(byte) {}

    /// The next place in `text`, which must be the same text each time, or `npos`.
    std::size_t Next(std::string_view text) {
        if (m_places == 0 && !Search(text)) return std::string_view::npos;
        const std::size_t place = m_block + static_cast<std::size_t>(std::countr_zero(m_places));
        m_places &= m_places - 1;
        return place;
    }

  private:
    bool Search(std::string_view text) {
        constexpr std::size_t kFar = 4 * ByteBlock::kSize;
        const std::size_t start = m_searched;
        const auto isByte = [this](const auto& part) { return std::decay_t<decltype(part)>(part == m_byte); };
        while (text.size() - m_searched >= ByteBlock::kSize) {
            const char* const bytes = text.data() + m_searched;
            m_block = m_searched;
            m_searched += ByteBlock::kSize;
            if (ByteBlock::TellAny(isByte, bytes)) {
                m_places = ByteBlock(bytes).Where(m_byte).Places();
                return true;
            }
            // The library is faster over a long distance.
            if (m_searched - start == kFar) m_searched = std::min(text.find(m_byte, m_searched), text.size());
        }
        m_places = ByteBlock(text.substr(m_searched)).Where(m_byte).Places();
        m_block = m_searched;
        m_searched = text.size();
        return m_places != 0;
    }

    char m_byte;
    std::size_t m_block = 0;     ///< the block whose remaining places are in `m_places`
    std::size_t m_searched = 0;  ///< there are no others before this position
    std::uint64_t m_places = 0;
};

/// The position of one text in another, or `npos`. Compares the first byte and the last two at once, which
/// rarely match by chance, even if lines differ only in a number. For a million lines, it takes a fifth of
/// the library's time.
inline std::size_t FindBytes(std::string_view text, std::string_view what) {
    constexpr std::size_t kLeast = 3;
    constexpr std::size_t kMost = 64;  // longer texts with a common beginning could take long to compare
    if (what.size() < kLeast) return text.find(what);
    if (what.size() > kMost) {
        const void* const found = memmem(text.data(), text.size(), what.data(), what.size());
        if (found == nullptr) return std::string_view::npos;
        return static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
    }
    const std::size_t last = what.size() - 1;
    const auto all = [&](const auto& first, const auto& beforeLast, const auto& atLast) {
        using Part = std::decay_t<decltype(first)>;
        return Part(first == what.front()) & Part(beforeLast == what[last - 1]) & Part(atLast == what[last]);
    };
    std::size_t at = 0;
    for (; text.size() - at >= ByteBlock::kSize + what.size(); at += ByteBlock::kSize) {
        const char* const bytes = text.data() + at;
        if (!ByteBlock::TellAny(all, bytes, bytes + last - 1, bytes + last)) continue;
        const ByteBlock told =
            ByteBlock(bytes).Where(what.front()) & ByteBlock(bytes + last).Where(what[last]);
        for (std::uint64_t places = told.Places(); places != 0; places &= places - 1) {
            const std::size_t place = at + static_cast<std::size_t>(std::countr_zero(places));
            if (std::memcmp(text.data() + place, what.data(), what.size()) == 0) return place;
        }
    }
    const std::size_t place = text.substr(at).find(what);
    return place == std::string_view::npos ? place : at + place;
}

}  // namespace ZET

#endif
