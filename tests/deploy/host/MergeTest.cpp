#include "deploy/host/Merge.h"

#include <gmock/gmock.h>

#include "deploy/host/Failure.h"

namespace ZET::Deploy {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(MergeTest, BothChangesAreInTheText) {
    const Merged merged = Merge("1\n2\n3\n4\n5!\n", "1\n2\n3\n4\n5\n", "1!\n2\n3\n4\n5\n", "f", "--force");
    EXPECT_THAT(merged.conflicts, IsEmpty());
    EXPECT_EQ(merged.text, "1!\n2\n3\n4\n5!\n");
}

TEST(MergeTest, AChangeThatBothMadeAlikeIsNone) {
    const Merged merged = Merge("1!\n2\n3\n", "1\n2\n3\n", "1!\n2\n3\n", "f", "--force");
    EXPECT_THAT(merged.conflicts, IsEmpty());
    EXPECT_EQ(merged.text, "1!\n2\n3\n");
}

TEST(MergeTest, AConflictIsToldByItsLineInTheFile) {
    const Merged merged = Merge("0\n1\n2 mine\n3\n4\n5\n6 mine\n", "1\n2\n3\n4\n5\n6\n",
                                "1\n2 yours\n3\n4\n5\n6 yours\n", "f", "--force");
    EXPECT_THAT(merged.conflicts, ElementsAre(3U, 7U));
    EXPECT_EQ(merged.text, "");
}

TEST(MergeTest, TheEndOfTheLastLineIsAsWhoeverChangedItLeftIt) {
    EXPECT_EQ(Merge("1\n2", "1\n2\n", "1\n2\n", "f", "--force").text, "1\n2");
    EXPECT_EQ(Merge("1\n2\n", "1\n2\n", "1\n2", "f", "--force").text, "1\n2");
    EXPECT_EQ(Merge("1\n2", "1\n2", "1\n2\n", "f", "--force").text, "1\n2\n");
    EXPECT_EQ(Merge("", "1\n", "1\n", "f", "--force").text, "");
}

TEST(MergeTest, ANulByteIsRefused) {
    EXPECT_THROW(Merge(std::string("1\0\n", 3), "1\n", "2\n", "f", "--force"), Failure);
}

}  // namespace
}  // namespace ZET::Deploy
