#include "text/FormerLines.h"

#include <gtest/gtest.h>

namespace ZET::Text {
namespace {

using Numbers = std::vector<std::size_t>;

TEST(FormerLinesTest, WithoutADifferenceEachLineIsWhereItWas) {
    EXPECT_EQ(FormerLines("", {1, 2, 7}), (Numbers{1, 2, 7}));
}

TEST(FormerLinesTest, ChangedLinesAreNewAndLaterOnesMove) {
    const char* const diff =
        "--- a/f\n+++ b/f\n@@ -2,3 +2,4 @@\n two\n-three\n+3\n+3 and more\n four\n@@ -10 +11 @@\n-ten\n+10\n";
    EXPECT_EQ(FormerLines(diff, {1, 2, 3, 4, 5, 6, 10, 11, 12}), (Numbers{1, 2, 0, 0, 4, 5, 9, 0, 11}));
}

TEST(FormerLinesTest, ALineThatIsNotAskedForIsFollowedAllTheSame) {
    EXPECT_EQ(FormerLines("@@ -0,0 +1,2 @@\n+a\n+b\n", {2, 3}), (Numbers{0, 1}));
}

TEST(FormerLinesTest, RemovedLinesMoveThoseBehindThem) {
    EXPECT_EQ(FormerLines("@@ -3,2 +2,0 @@\n-a\n-b\n", {1, 2, 3, 4}), (Numbers{1, 2, 5, 6}));
}

TEST(FormerLinesTest, LinesThatLookLikeHeadsOfADiffAreText) {
    EXPECT_EQ(
        FormerLines("--- a/f\n+++ b/f\n@@ -1,2 +1,2 @@\n-- a\n-@@ -9 +9 @@\n++ b\n+@@ -9 +9 @@\n", {1, 2, 3}),
        (Numbers{0, 0, 3}));
}

TEST(FormerLinesTest, AMissingLineFeedIsNoLine) {
    EXPECT_EQ(FormerLines("@@ -1,2 +1,2 @@\n a\n-b\n\\ No newline at end of file\n+b\n", {1, 2, 3}),
              (Numbers{1, 0, 3}));
}

}  // namespace
}  // namespace ZET::Text
