#include "deploy/state/store/TextMark.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <stdexcept>

namespace ZET::Deploy {

namespace {

constexpr std::size_t kLanes = 4;
constexpr std::size_t kWord = sizeof(std::uint64_t);
constexpr std::size_t kBlock = kLanes * kWord;
using Block = std::array<std::uint64_t, kLanes>;

std::uint64_t WordAt(const char* bytes) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, kWord);
    if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
    return word;
}

/// As many SipHashes as there are words, each with its number in its first state.
template <std::size_t count>
class SipHashes {
  public:
    using Each = std::array<std::uint64_t, count>;

    SipHashes(const std::string& key, std::uint64_t first) {
        const std::uint64_t low = WordAt(key.data());
        const std::uint64_t high = WordAt(key.data() + kWord);
        for (std::size_t i = 0; i < count; ++i) {
            m_a[i] = low ^ 0x736f6d6570736575;
            m_b[i] = high ^ 0x646f72616e646f6d ^ (first + i);
            m_c[i] = low ^ 0x6c7967656e657261;
            m_d[i] = high ^ 0x7465646279746573;
        }
    }

    void Add(const Each& words) {
        for (std::size_t i = 0; i < count; ++i)
            m_d[i] ^= words[i];
        Round();
        for (std::size_t i = 0; i < count; ++i)
            m_a[i] ^= words[i];
    }

    Each End() {
        for (std::size_t i = 0; i < count; ++i)
            m_c[i] ^= 0xff;
        for (int round = 0; round < 3; ++round)
            Round();
        Each ends;
        for (std::size_t i = 0; i < count; ++i)
            ends[i] = m_a[i] ^ m_b[i] ^ m_c[i] ^ m_d[i];
        return ends;
    }

  private:
    void Round() {
        for (std::size_t i = 0; i < count; ++i) {
            m_a[i] += m_b[i];
            m_c[i] += m_d[i];
            m_b[i] = std::rotl(m_b[i], 13) ^ m_a[i];
            m_d[i] = std::rotl(m_d[i], 16) ^ m_c[i];
            m_a[i] = std::rotl(m_a[i], 32) + m_d[i];
            m_c[i] += m_b[i];
            m_d[i] = std::rotl(m_d[i], 21) ^ m_a[i];
            m_b[i] = std::rotl(m_b[i], 17) ^ m_c[i];
            m_c[i] = std::rotl(m_c[i], 32);
        }
    }

    Each m_a, m_b, m_c, m_d;
};

Block BlockAt(const char* bytes) {
    Block block;
    for (std::size_t word = 0; word < kLanes; ++word)
        block[word] = WordAt(bytes + word * kWord);
    return block;
}

/// Of what is shorter than one, behind which are zeros.
Block LastBlock(std::string_view rest) {
    char bytes[kBlock] = {};
    std::copy(rest.begin(), rest.end(), bytes);
    return BlockAt(bytes);
}

}  // namespace

std::int64_t MarkOf(const std::string& key, std::string_view text) {
    if (key.size() != kSizeOfMarkKey) throw std::invalid_argument("no key of a mark");
    SipHashes<kLanes> lanes(key, 1);
    std::string_view rest = text;
    for (; rest.size() >= kBlock; rest.remove_prefix(kBlock))
        lanes.Add(BlockAt(rest.data()));
    SipHashes<1> whole(key, 0);
    for (const Block& block : {lanes.End(), LastBlock(rest)})
        for (const std::uint64_t word : block)
            whole.Add({word});
    whole.Add({text.size()});
    return static_cast<std::int64_t>(whole.End()[0]);
}

}  // namespace ZET::Deploy
