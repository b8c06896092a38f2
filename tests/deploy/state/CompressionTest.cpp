#include "deploy/state/store/Compression.h"

#include <gtest/gtest.h>
#include <zstd.h>

#include <random>
#include <string>
#include <vector>

#include "deploy/state/store/Library.h"
#include "deploy/state/store/PlainFrame.h"

namespace ZET::Deploy {
namespace {

/// Lines of a few letters, as many as make so many bytes.
std::string TextOf(std::size_t size) {
    std::mt19937 source(1);
    std::string text;
    while (text.size() < size)
        text += text.size() % 20 == 19 ? '\n' : static_cast<char>('a' + source() % 8);
    return text;
}

/// What the library makes of a frame; nothing of one that it refuses.
std::string ExpandedByLibrary(const std::string& frame, std::size_t size) {
    decltype(ZSTD_decompress)* decompress = nullptr;
    Library("libzstd.so.1", "libzstd1").Find(decompress, "ZSTD_decompress");
    std::string text(size + 1, '\0');
    const std::size_t length = decompress(text.data(), text.size(), frame.data(), frame.size());
    return length <= text.size() ? text.substr(0, length) : "";
}

class FrameTest : public testing::TestWithParam<std::size_t> {
  protected:
    const std::string m_text = TextOf(GetParam());
    const std::string m_frame = Compressed(m_text);
};

TEST_P(FrameTest, ComesBackAsItWas) {
    EXPECT_EQ(Expanded(m_frame, m_text.size()), m_text);
    EXPECT_EQ(Expanded(m_frame, m_text.size() + 1), std::nullopt);
}

TEST_P(FrameTest, IsReadByTheLibrary) {
    EXPECT_EQ(ExpandedByLibrary(m_frame, m_text.size()), m_text);
}

TEST_P(FrameTest, IsPlainOnlyWhereItIsShort) {
    EXPECT_EQ(TextOfPlainFrame(m_frame).has_value(), m_text.size() <= kLongestPlainText);
}

TEST_P(FrameTest, IsThatOfItsTextAlone) {
    EXPECT_EQ(IsFrameOf(m_frame, m_text), true);
    EXPECT_EQ(IsFrameOf(m_frame, m_text + "x"), std::nullopt);  // of the same size, it says, which is wrong
    for (const std::size_t place : {std::size_t{0}, m_text.size() / 2, m_text.size() - 1}) {
        std::string other = m_text;
        if (other.empty()) break;
        other[place] = 'z';
        EXPECT_EQ(IsFrameOf(m_frame, other), false) << place;
    }
}

TEST_P(FrameTest, DamageIsNeverTakenForAnotherText) {
    std::string other = m_text;
    if (!other.empty()) other[0] = 'z';
    for (std::size_t place = 0; place < m_frame.size(); place += 1 + m_frame.size() / 500) {
        std::string damaged = m_frame;
        damaged[place] = static_cast<char>(damaged[place] ^ 0x41);
        const bool isHarmless = ExpandedByLibrary(damaged, m_text.size()) == m_text && !m_text.empty();
        const auto expected = isHarmless ? std::optional(m_text) : std::nullopt;
        EXPECT_EQ(Expanded(damaged, m_text.size()), expected) << place;
        EXPECT_EQ(IsFrameOf(damaged, m_text), isHarmless ? std::optional(true) : std::nullopt) << place;
        if (!other.empty()) {
            EXPECT_EQ(IsFrameOf(damaged, other), isHarmless ? std::optional(false) : std::nullopt) << place;
        }
    }
}

TEST_P(FrameTest, WhatIsCutOrGoesOnIsDamaged) {
    for (const std::string& damaged : {m_frame.substr(0, m_frame.size() - 1), m_frame.substr(0, 3),
                                       m_frame.substr(0, m_frame.size() / 2), m_frame + "x", std::string()}) {
        EXPECT_EQ(Expanded(damaged, m_text.size()), std::nullopt) << damaged.size();
        EXPECT_EQ(IsFrameOf(damaged, m_text), std::nullopt) << damaged.size();
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, FrameTest,
                         testing::Values(0, 1, 255, 256, 257, 3000, kLongestPlainText, kLongestPlainText + 1,
                                         5000, 32 << 10, (32 << 10) + 1, 300'000, 1'500'000));

// As it was kept before short texts were left as they are.
TEST(CompressionTest, AShortTextThatWasCompressedIsRead) {
    const std::string text = TextOf(3000);
    decltype(ZSTD_compress)* compress = nullptr;
    Library("libzstd.so.1", "libzstd1").Find(compress, "ZSTD_compress");
    std::string frame(5000, '\0');
    frame.resize(compress(frame.data(), frame.size(), text.data(), text.size(), 1));
    ASSERT_LT(frame.size(), text.size());
    EXPECT_EQ(Expanded(frame, text.size()), text);
    EXPECT_EQ(IsFrameOf(frame, text), true);
    EXPECT_EQ(IsFrameOf(frame, TextOf(2999) + "z"), false);
}

}  // namespace
}  // namespace ZET::Deploy
