#include "deploy/state/store/TextDelta.h"

#include <gtest/gtest.h>

#include <random>

#include "deploy/state/store/Digest.h"

namespace ZET::Deploy {
namespace {

class TextDeltaTest : public testing::Test {
  protected:
    std::size_t Below(std::size_t limit) { return m_random() % limit; }

    std::string Text(std::size_t size) {
        std::string text;
        while (text.size() < size)
            text += "ab\n"[Below(3)];
        return text;
    }

    /// The text with a few bytes somewhere taken out, and others there.
    std::string Edited(std::string text) {
        const std::size_t at = Below(text.size() + 1);
        return text.replace(at, Below(20), Text(Below(20)));
    }

    /// One after the other, each by the former alone.
    void ExpectEditsComeBack(const std::string& base, int edits) {
        TextDelta delta = DeltaOfWhole(7, base.size());
        std::string former = base;
        for (int edit = 0; edit < edits; ++edit) {
            const std::string text = Edited(former);
            const auto made = DeltaFrom(delta, former, text);
            if (!made) return;
            const auto read = DeltaOfFrame(FrameOf(*made));
            ASSERT_TRUE(read);
            EXPECT_EQ(read->base, 7);
            EXPECT_EQ(Made(*read, base, text.size()), text);
            delta = *read;
            former = text;
        }
    }

    std::minstd_rand m_random{1};
};

TEST_F(TextDeltaTest, EditsComeBackByTheBaseAlone) {
    for (int run = 0; run < 300; ++run)
        ExpectEditsComeBack(Text(Below(run < 250 ? 200 : 20000)), 20);
}

TEST_F(TextDeltaTest, AnEditOfOneLineIsShort) {
    const std::string base = Text(100000);
    std::string text = base;
    text[50000] = 'X';
    const auto delta = DeltaFrom(DeltaOfWhole(1, base.size()), base, text);
    ASSERT_TRUE(delta);
    EXPECT_LT(FrameOf(*delta).size(), 100u);
    EXPECT_EQ(delta->pieces.size(), 3u);
    std::string again = text;
    again[50001] = 'Y';
    EXPECT_EQ(DeltaFrom(*delta, text, again)->pieces.size(), 3u);
}

TEST_F(TextDeltaTest, WhatHasLittleOfTheFormerIsNone) {
    const std::string base = Text(100000);
    EXPECT_FALSE(DeltaFrom(DeltaOfWhole(1, base.size()), base, Text(100000)));
    EXPECT_TRUE(DeltaFrom(DeltaOfWhole(1, base.size()), base, base.substr(0, 10)));
}

TEST_F(TextDeltaTest, DamageIsNeverTakenForAnotherText) {
    const std::string base = Text(300);
    const std::string text = Edited(Edited(base));
    const auto delta = DeltaFrom(DeltaOfWhole(1, base.size()), base, text);
    ASSERT_TRUE(delta);
    const std::string frame = FrameOf(*delta);
    for (std::size_t i = 0; i < frame.size(); ++i) {
        for (const int bit : {1, 16}) {
            std::string damaged = frame;
            damaged[i] = static_cast<char>(damaged[i] ^ bit);
            if (!IsFrameOfDelta(damaged)) continue;
            const auto read = DeltaOfFrame(damaged);
            // The number of the base is not of its bytes.
            if (read && read->base == 1) {
                EXPECT_EQ(Made(*read, base, text.size()).value_or(text), text);
            }
        }
        const auto cut = i < 4 ? std::nullopt : DeltaOfFrame(frame.substr(0, i));
        EXPECT_FALSE(cut && Made(*cut, base, text.size())) << i;
    }
    std::string other = base;
    other[0] = static_cast<char>(other[0] ^ 1);
    EXPECT_FALSE(Made(*delta, other, text.size()));
    EXPECT_FALSE(Made(*delta, base, text.size() + 1));
    EXPECT_FALSE(Made(*delta, base, text.size() - 1));
    EXPECT_FALSE(Made(*delta, "", text.size()));
}

}  // namespace
}  // namespace ZET::Deploy
