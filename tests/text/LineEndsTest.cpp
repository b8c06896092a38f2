#include "text/LineEnds.h"

#include <gtest/gtest.h>

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
