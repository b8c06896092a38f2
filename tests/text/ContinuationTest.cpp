#include "text/Continuation.h"

#include <gtest/gtest.h>

namespace ZET::Text {
namespace {

TEST(Continuation, OddNumberOfBackslashesGoesOn) {
    for (const char* line : {"a \\", "\\", "a\\\\\\", "a \\\r", "  --b \\"})
        EXPECT_TRUE(GoesOn(line)) << line;
}

TEST(Continuation, OtherLinesEnd) {
    for (const char* line : {"", "a", "a\\\\", "a \\ ", "a\\b", "# a \\", " ;a \\", "\r"})
        EXPECT_FALSE(GoesOn(line)) << line;
}

TEST(Continuation, LastLineMayLackItsLineFeed) {
    EXPECT_EQ(LastLineOf("a\nb"), "b");
    EXPECT_EQ(LastLineOf("a\nb\n"), "b");
    EXPECT_EQ(LastLineOf("a"), "a");
    EXPECT_EQ(LastLineOf("a\n\n"), "");
    EXPECT_EQ(LastLineOf(""), "");
}

}  // namespace
}  // namespace ZET::Text
