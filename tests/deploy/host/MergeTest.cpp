#include "deploy/host/Merge.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "deploy/host/Failure.h"

namespace ZET::Deploy {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kBase[] = "a\nb\nc\nd\ne\n";

Merged MergedOf(const std::string& mine, const std::string& yours) {
    return Deploy::Merge(mine, kBase, yours, "file");
}

TEST(MergeTest, BothChangesAreInTheResult) {
    const Merged merged = MergedOf("A\nb\nc\nd\ne\n", "a\nb\nc\nd\nE\nf\n");
    EXPECT_THAT(merged.conflicts, IsEmpty());
    EXPECT_EQ(merged.text, "A\nb\nc\nd\nE\nf\n");
}

TEST(MergeTest, ChangeThatBothMadeIsNoConflict) {
    const Merged merged = MergedOf("a\nb\nX\nd\ne\n", "a\nb\nX\nd\nE\n");
    EXPECT_THAT(merged.conflicts, IsEmpty());
    EXPECT_EQ(merged.text, "a\nb\nX\nd\nE\n");
}

TEST(MergeTest, ConflictsAreToldByTheLinesOfMine) {
    const Merged merged = MergedOf("new\na\nX\nc\nd\nY\n", "a\nZ\nc\nd\nW\n");
    EXPECT_THAT(merged.conflicts, ElementsAre(3, 6));
    EXPECT_EQ(merged.text, "");
}

TEST(MergeTest, LineFeedAtTheEndIsAsWhoeverChangedItLeftIt) {
    EXPECT_EQ(MergedOf("A\nb\nc\nd\ne\n", "a\nb\nc\nd\ne").text, "A\nb\nc\nd\ne");
    EXPECT_EQ(MergedOf("a\nb\nc\nd\ne", "A\nb\nc\nd\ne\n").text, "A\nb\nc\nd\ne");
}

TEST(MergeTest, BytesThatAreNoTextOfAnyLanguageStay) {
    EXPECT_EQ(MergedOf("\xff\nb\nc\nd\ne\n", "a\nb\nc\nd\n\xfe\n").text, "\xff\nb\nc\nd\n\xfe\n");
}

TEST(MergeTest, NulByteIsAFailure) {
    EXPECT_THROW(MergedOf(std::string("a\0\n", 3), "b\n"), Failure);
}

}  // namespace
}  // namespace ZET::Deploy
