#include "posix/ByteBlock.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace ZET {
namespace {

constexpr std::size_t kLongest = 400;  // well beyond what is searched without a call of the library

TEST(ByteBlock, TellsEachPlaceOfAByte) {
    for (std::size_t first = 0; first < ByteBlock::kSize; ++first) {
        for (std::size_t second = first; second < ByteBlock::kSize; ++second) {
            std::string text(ByteBlock::kSize, '\x0b');
            text[first] = text[second] = '\n';
            const std::uint64_t expected = std::uint64_t{1} << first | std::uint64_t{1} << second;
            ASSERT_EQ(ByteBlock(text.data()).Where('\n').Places(), expected);
        }
    }
}

TEST(ByteBlock, RestOfATextHasZeroBytesBehindIt) {
    const std::string text = "\nab\n\n";
    EXPECT_EQ(ByteBlock(std::string_view(text).substr(0, 4)).Where('\n').Places(), 9U);
    EXPECT_EQ(ByteBlock(std::string_view(text).substr(0, 4)).Where('\0').Places(), ~std::uint64_t{15});
    EXPECT_EQ(ByteBlock(std::string_view()).Where('\0').Places(), ~std::uint64_t{0});
}

TEST(SizeOfWholeLines, EndsWithTheLastLineFeed) {
    EXPECT_EQ(SizeOfWholeLines(""), 0U);
    EXPECT_EQ(SizeOfWholeLines("x"), 0U);
    EXPECT_EQ(SizeOfWholeLines("\n"), 1U);
    EXPECT_EQ(SizeOfWholeLines("x\n\ny"), 3U);
    EXPECT_EQ(SizeOfWholeLines(std::string_view("x\ny\n").substr(0, 3)), 2U);
}

TEST(BytePlaces, AreFoundAtEveryDistance) {
    for (std::size_t size = 0; size <= kLongest; ++size) {
        for (std::size_t position = 0; position < size; ++position) {
            std::string text(size, '\x0b');
            text[position] = text.back() = '\n';
            BytePlaces places('\n');
            ASSERT_EQ(places.Next(text), position) << size;
            ASSERT_EQ(places.Next(text), position + 1 == size ? std::string::npos : size - 1) << size;
        }
        // What stands behind the text is not found.
        const std::string text = std::string(size, 'x') + '\n';
        BytePlaces places('\n');
        ASSERT_EQ(places.Next(std::string_view(text).substr(0, size)), std::string_view::npos) << size;
    }
}

TEST(BytePlaces, AreThoseThatTheLibraryFinds) {
    std::mt19937 random(6);
    for (int i = 0; i < 500; ++i) {
        std::string text(random() % 3000, 'x');
        const std::size_t oneOf = 1 + random() % 300;
        for (char& c : text)
            if (random() % oneOf == 0) c = '\n';
        BytePlaces places('\n');
        std::size_t at = 0;
        do {
            at = text.find('\n', at);
            ASSERT_EQ(places.Next(text), at);
        } while (at++ != std::string::npos);
    }
}

/// As the library finds it: in texts of two letters, in which much is nearly what is looked for.
TEST(FindBytes, FindsWhatTheLibraryFinds) {
    std::mt19937 random(7);
    const auto made = [&](std::size_t size) {
        std::string text(size, 'a');
        for (char& c : text)
            c = random() % 4 == 0 ? 'b' : 'a';
        return text;
    };
    std::size_t found = 0;
    for (std::size_t i = 0; i < 50'000; ++i) {
        const std::string text = made(random() % kLongest);
        const std::string what = made(random() % (i % 50 == 0 ? 100 : 14));
        ASSERT_EQ(FindBytes(text, what), text.find(what)) << text << " " << what;
        found += text.find(what) < std::string::npos ? 1 : 0;
    }
    EXPECT_GT(found, 5'000U);
}

TEST(FindBytes, FindsWhereverItBegins) {
    for (const std::size_t size : {3U, 10U, 64U, 65U, 200U}) {
        const std::string what = "#" + std::string(size - 2, '-') + "!";
        for (std::size_t position = 0; position < kLongest; ++position) {
            const std::string text = std::string(position, '-') + what + what;
            ASSERT_EQ(FindBytes(text, what), position);
            ASSERT_EQ(FindBytes(std::string_view(text).substr(0, position + size - 1), what),
                      std::string_view::npos);
        }
    }
}

}  // namespace
}  // namespace ZET
