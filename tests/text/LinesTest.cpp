#include "text/Lines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace ZET::Text {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The lines, "|" behind those without a line feed.
std::vector<std::string> Split(std::string_view text) {
    std::vector<std::string> lines;
    for (const TextLine& line : SplitLines(text))
        lines.push_back(std::string(line.text) + (line.hasLineFeed ? "" : "|"));
    return lines;
}

TEST(Lines, EmptyTextHasNone) {
    EXPECT_THAT(Split(""), IsEmpty());
}

TEST(Lines, LineFeedEndsALineAndBeginsNone) {
    EXPECT_THAT(Split("a\n"), ElementsAre("a"));
    EXPECT_THAT(Split("\n\na\n"), ElementsAre("", "", "a"));
}

TEST(Lines, LastLineMayLackItsLineFeed) {
    EXPECT_THAT(Split("a\nb"), ElementsAre("a", "b|"));
}

TEST(Lines, LineFeedsAreCountedInTextsOfEveryLength) {
    std::string text;
    std::size_t count = 0;
    for (std::size_t size = 0; size < 700; ++size) {
        ASSERT_EQ(CountLineFeeds(text), count) << size;
        ASSERT_EQ(CountLines(text), SplitLines(text).size()) << size;
        const bool isLineFeed = size % 7 == 3 || (size > 200 && size < 500);
        text += isLineFeed ? '\n' : 'x';
        count += isLineFeed ? 1 : 0;
    }
}

TEST(Lines, LinesBeforeAByteEndWhereItsLineBegins) {
    EXPECT_EQ(LinesBefore("a\nb\ncd\n", 5), "a\nb\n");
    EXPECT_EQ(LinesBefore("a\nb\n", 2), "a\n");
    EXPECT_EQ(LinesBefore("a\nb\n", 3), "a\n");
    EXPECT_EQ(LinesBefore("a\nb\n", 0), "");
    EXPECT_EQ(LinesBefore("a\nb", 4), "a\nb");
}

TEST(Lines, CarriageReturnIsPartOfTheLine) {
    EXPECT_THAT(Split("a\r\n\rb\n"), ElementsAre("a\r", "\rb"));
    EXPECT_EQ(WithoutCarriageReturn("a\r\r"), "a\r");
    EXPECT_EQ(WithoutCarriageReturn("a"), "a");
    EXPECT_EQ(WithoutCarriageReturn(""), "");
}

TEST(Lines, NullByteEndsNoLine) {
    EXPECT_THAT(Split(std::string_view("a\0b\nc\n", 6)), ElementsAre(std::string("a\0b", 3), "c"));
}

}  // namespace
}  // namespace ZET::Text
