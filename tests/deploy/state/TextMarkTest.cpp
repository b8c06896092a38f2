#include "deploy/state/store/TextMark.h"

#include <gtest/gtest.h>

#include <bit>
#include <set>
#include <vector>

namespace ZET::Deploy {
namespace {

const std::string kKey = "sixteen bytes...";

std::uint64_t WordOf(std::string_view bytes) {
    std::uint64_t word = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        word |= std::uint64_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
    return word;
}

/// As plain as can be: one lane after the other.
std::uint64_t SipHash(std::uint64_t lane, const std::vector<std::uint64_t>& words) {
    const std::uint64_t low = WordOf(kKey.substr(0, 8));
    const std::uint64_t high = WordOf(kKey.substr(8));
    std::uint64_t a = low ^ 0x736f6d6570736575;
    std::uint64_t b = high ^ 0x646f72616e646f6d ^ lane;
    std::uint64_t c = low ^ 0x6c7967656e657261;
    std::uint64_t d = high ^ 0x7465646279746573;
    const auto mix = [&] {
        a += b, b = std::rotl(b, 13), b ^= a, a = std::rotl(a, 32);
        c += d, d = std::rotl(d, 16), d ^= c;
        a += d, d = std::rotl(d, 21), d ^= a;
        c += b, b = std::rotl(b, 17), b ^= c, c = std::rotl(c, 32);
    };
    for (const std::uint64_t word : words) {
        d ^= word;
        mix();
        a ^= word;
    }
    c ^= 0xff;
    mix(), mix(), mix();
    return a ^ b ^ c ^ d;
}

std::uint64_t PlainMark(std::string_view text) {
    std::vector<std::uint64_t> lanes[4];
    std::size_t at = 0;
    for (; at + 32 <= text.size(); at += 32)
        for (std::size_t lane = 0; lane < 4; ++lane)
            lanes[lane].push_back(WordOf(text.substr(at + 8 * lane, 8)));
    std::vector<std::uint64_t> whole;
    for (std::size_t lane = 0; lane < 4; ++lane)
        whole.push_back(SipHash(lane + 1, lanes[lane]));
    const std::string rest = std::string(text.substr(at)) + std::string(32, '\0');
    for (std::size_t word = 0; word < 4; ++word)
        whole.push_back(WordOf(std::string_view(rest).substr(8 * word, 8)));
    whole.push_back(text.size());
    return SipHash(0, whole);
}

std::string SomeText(std::size_t size) {
    std::string text;
    for (std::size_t i = 0; i < size; ++i)
        text += static_cast<char>(i * i / 7 + i);
    return text;
}

TEST(TextMarkTest, IsThatOfTheLanesOneAfterTheOther) {
    for (std::size_t size = 0; size < 300; ++size)
        EXPECT_EQ(static_cast<std::uint64_t>(MarkOf(kKey, SomeText(size))), PlainMark(SomeText(size)))
            << size;
}

TEST(TextMarkTest, EachByteTheSizeAndTheKeyCount) {
    const std::string text = SomeText(100);
    std::set<std::int64_t> marks = {MarkOf(kKey, text), MarkOf(kKey, text + '\0'),
                                    MarkOf("sixteen bytes,,,", text), MarkOf("Sixteen bytes...", text)};
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::string other = text;
        other[i] = static_cast<char>(other[i] ^ 1);
        marks.insert(MarkOf(kKey, other));
        marks.insert(MarkOf(kKey, text.substr(0, i)));
    }
    EXPECT_EQ(marks.size(), 4 + 2 * text.size());
}

}  // namespace
}  // namespace ZET::Deploy
