#include "deploy/state/store/TextMark.h"

#include <bit>
#include <cstring>
#include <stdexcept>

namespace ZET::Deploy {

namespace {

constexpr std::size_t kWord = sizeof(std::uint64_t);

/// Little-endian on every host; missing bytes are zero.
std::uint64_t WordOf(std::string_view bytes) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes.data(), bytes.size());
    if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
    return word;
}

class SipHash {
  public:
    explicit SipHash(std::string_view key) {
        const std::uint64_t low = WordOf(key.substr(0, kWord));
        const std::uint64_t high = WordOf(key.substr(kWord));
        m_a ^= low;
        m_b ^= high;
        m_c ^= low;
        m_d ^= high;
    }

    void Add(std::uint64_t word) {
        m_d ^= word;
        Round();
        m_a ^= word;
    }

    std::uint64_t End() {
        m_c ^= 0xff;
        for (int round = 0; round < 3; ++round)
            Round();
        return m_a ^ m_b ^ m_c ^ m_d;
    }

  private:
    void Round() {
        m_a += m_b;
        m_b = std::rotl(m_b, 13) ^ m_a;
        m_a = std::rotl(m_a, 32);
        m_c += m_d;
        m_d = std::rotl(m_d, 16) ^ m_c;
        m_a += m_d;
        m_d = std::rotl(m_d, 21) ^ m_a;
        m_c += m_b;
        m_b = std::rotl(m_b, 17) ^ m_c;
        m_c = std::rotl(m_c, 32);
    }

    std::uint64_t m_a = 0x736f6d6570736575;
    std::uint64_t m_b = 0x646f72616e646f6d;
    std::uint64_t m_c = 0x6c7967656e657261;
    std::uint64_t m_d = 0x7465646279746573;
};

}  // namespace

std::int64_t MarkOf(std::string_view key, std::string_view text) {
    if (key.size() != kSizeOfMarkKey) throw std::invalid_argument("no key of a mark");
    constexpr int kSizeShift = 56;
    SipHash hash(key);
    std::string_view rest = text;
    for (; rest.size() >= kWord; rest.remove_prefix(kWord))
        hash.Add(WordOf(rest.substr(0, kWord)));
    hash.Add(WordOf(rest) | std::uint64_t{text.size()} << kSizeShift);
    return static_cast<std::int64_t>(hash.End());
}

}  // namespace ZET::Deploy
