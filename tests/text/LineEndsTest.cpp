#include "text/LineEnds.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "text/Lines.h"

namespace ZET::Text {
namespace {

constexpr char kBlock[] = "# ---ZET_BEGIN---\nkdc=new\n# ----ZET_END----\n";

bool AreCarriageReturns(const std::string& text) {
    return LineEndsOf(text).areCarriageReturns;
}

std::size_t OtherLine(const std::string& text) {
    return LineEndsOf(text).otherLine;
}

TEST(LineEnds, CarriageReturnsOfAllLinesAreSeen) {
    EXPECT_TRUE(AreCarriageReturns("a\r\n\r\nb\r\n"));
    EXPECT_FALSE(AreCarriageReturns(""));
    EXPECT_FALSE(AreCarriageReturns("a"));
    EXPECT_FALSE(AreCarriageReturns("a\nb\n"));
    EXPECT_FALSE(AreCarriageReturns("a\r"));
}

TEST(LineEnds, LastLineWithoutAnEndDoesNotCount) {
    EXPECT_TRUE(AreCarriageReturns("a\r\nb"));
    EXPECT_EQ(OtherLine("a\nb\r"), 0u);
}

TEST(LineEnds, LinesOfTheSystemDoNotCount) {
    const std::string block = kBlock;
    EXPECT_TRUE(AreCarriageReturns("a\r\n" + block));
    EXPECT_TRUE(AreCarriageReturns("a\r\n\n" + block + "# --PRE-ZET-- b\r\n" + block));
    EXPECT_TRUE(AreCarriageReturns("# --ZET_CONFIG_COMMENT--\n# text\n\n# --ZET_COMMENT_END--\na\r\n"));
}

TEST(LineEnds, FirstLineOfTheOtherKindIsNamed) {
    EXPECT_EQ(OtherLine("a\r\nb\r\nc\nd\r\n"), 3u);
    EXPECT_FALSE(LineEndsOf("a\r\nb\n").isOtherCarriageReturn);
    EXPECT_EQ(OtherLine("a\nb\nc\r\n"), 3u);
    EXPECT_TRUE(LineEndsOf("a\nb\r\n").isOtherCarriageReturn);
    EXPECT_EQ(OtherLine("a\r\n\nb\r\n"), 2u);
    EXPECT_EQ(OtherLine("a\r\n\n"), 2u);
    EXPECT_FALSE(AreCarriageReturns("a\r\nb\n"));
    EXPECT_FALSE(AreCarriageReturns("a\nb\r\n"));
}

/// A text in one piece is looked at line by line.
TEST(LineEnds, PiecesOfATextTellWhatTheWholeTells) {
    const std::vector<std::string> lines = {
        "a\n", "a\n", "b\n", "\n", "# ---ZET_BEGIN---\n", "# ----ZET_END----\n", "a\r\n", "x # --\n", kBlock};
    std::minstd_rand random;  // NOLINT: the same texts in each run
    std::size_t mixed = 0;
    for (int round = 0; round < 20'000; ++round) {
        std::string text;
        LineEndScan scan;
        std::size_t before = 0;
        for (std::size_t pieces = random() % 5; pieces > 0; --pieces) {
            std::string piece;
            for (std::size_t count = 1 + random() % 4; count > 0; --count)
                piece += lines[random() % lines.size()];
            scan.Take(piece, before);
            before += CountLines(piece);
            text += piece;
        }
        const LineEnds found = scan.End();
        const LineEnds wanted = LineEndsOf(text);
        ASSERT_EQ(found.otherLine, wanted.otherLine) << text;
        ASSERT_EQ(found.isOtherCarriageReturn, wanted.isOtherCarriageReturn) << text;
        ASSERT_EQ(found.areCarriageReturns, wanted.areCarriageReturns) << text;
        mixed += wanted.otherLine != 0 ? 1 : 0;
    }
    EXPECT_GT(mixed, 5'000U);
}

TEST(LineEnds, LineThatIsSetEndsAsTheOthersDo) {
    EXPECT_EQ(WithLineEnd("a=1", LineEndsOf("b\r\n")), "a=1\r");
    EXPECT_EQ(WithLineEnd("a=1\r", LineEndsOf("b\r\n")), "a=1\r");
    EXPECT_EQ(WithLineEnd("a=1", LineEndsOf("b\n")), "a=1");
    EXPECT_EQ(WithLineEnd("a=1", LineEndsOf("b\r\nc\n")), "a=1");
}

TEST(LineEnds, OneCarriageReturnBelongsToTheEnd) {
    EXPECT_EQ(WithoutLineEnd("a\r"), "a");
    EXPECT_EQ(WithoutLineEnd("a\r\r"), "a\r");
    EXPECT_EQ(WithoutLineEnd("a"), "a");
    EXPECT_EQ(WithoutLineEnd(""), "");
}

}  // namespace
}  // namespace ZET::Text
