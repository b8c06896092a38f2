#include "text/Placeholders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ZET::Text {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Placeholders, TheyAreToldOnceEach) {
    EXPECT_THAT(PlaceholdersOf("${a}#${b}${a} ${"), ElementsAre("${a}", "${b}"));
}

TEST(Placeholders, FirstClosingBraceEndsThem) {
    EXPECT_THAT(PlaceholdersOf("${max${realm}}"), ElementsAre("${max${realm}"));
}

TEST(Placeholders, CommentLineHasNone) {
    EXPECT_THAT(PlaceholdersOf("# ${realm}"), IsEmpty());
    EXPECT_THAT(PiecesBetweenPlaceholders("# ${realm}"), ElementsAre("# ${realm}"));
    EXPECT_THAT(PlaceholdersOf("  # ${realm}"), ElementsAre("${realm}"));
}

TEST(Placeholders, OneWithoutEndIsThereButNotClosed) {
    const PlaceholderRange range = NextPlaceholder("a} ${b", 0);
    EXPECT_TRUE(range.IsThere());
    EXPECT_EQ(range.begin, 3u);
    EXPECT_FALSE(range.IsClosed());
    EXPECT_FALSE(NextPlaceholder("a} $b {c}", 0).IsThere());
}

TEST(Placeholders, PiecesStandBeforeBetweenAndBehindThem) {
    EXPECT_THAT(PiecesBetweenPlaceholders("x=${a}.${b}"), ElementsAre("x=", ".", ""));
    EXPECT_THAT(PiecesBetweenPlaceholders("x=${a} ${"), ElementsAre("x=", " ${"));
    EXPECT_THAT(PiecesBetweenPlaceholders(""), ElementsAre(""));
}

}  // namespace
}  // namespace ZET::Text
