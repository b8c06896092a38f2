#include "text/Placeholders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>

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

TEST(PlaceholderWalk, FindsWhatIsFoundOneByOne) {
    const std::string bytes = "${}$xx{}x\n";
    std::mt19937 random(5);
    for (int i = 0; i < 5000; ++i) {
        std::string text;
        for (std::size_t count = random() % 300; count > 0; --count)
            text += random() % 3 == 0 ? "${" : std::string(1, bytes[random() % bytes.size()]);
        PlaceholderWalk walk(text);
        for (std::size_t from = 0; from <= text.size();) {
            const PlaceholderRange expected = NextPlaceholder(text, from);
            const PlaceholderRange found = walk.NextFrom(from);
            ASSERT_EQ(found.begin, expected.begin) << text << "\n" << from;
            ASSERT_EQ(found.end, expected.end) << text << "\n" << from;
            if (!found.IsThere()) break;
            from = random() % 2 == 0  ? found.begin + random() % 3
                   : found.IsClosed() ? found.end
                                      : found.begin + 1;
        }
    }
}

TEST(Placeholders, PiecesStandBeforeBetweenAndBehindThem) {
    EXPECT_THAT(PiecesBetweenPlaceholders("x=${a}.${b}"), ElementsAre("x=", ".", ""));
    EXPECT_THAT(PiecesBetweenPlaceholders("x=${a} ${"), ElementsAre("x=", " ${"));
    EXPECT_THAT(PiecesBetweenPlaceholders(""), ElementsAre(""));
}

}  // namespace
}  // namespace ZET::Text
