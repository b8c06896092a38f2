#include "text/Adoption.h"

#include <gmock/gmock.h>

namespace ZET::Text {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const StringMap kValues = {
    {"${realm}", "EXAMPLE.ORG"}, {"${domain}", "example.org"}, {"${one}", "1"}, {"${none}", ""}};

Adoption Adopt(std::string_view templateText, std::string_view rendered, std::string_view edited,
               std::string_view difference) {
    return AdoptEdit(templateText, rendered, edited, HunksOf(difference).value(), kValues);
}

TEST(Hunks, AreReadAsDiffWritesThem) {
    const auto hunks =
        HunksOf("2,3c4\n< a\n< b\n---\n> c\n7a8,9\n> x\n> y\n9d11\n< z\n\\ No newline at end of file\n");
    ASSERT_TRUE(hunks);
    ASSERT_EQ(hunks->size(), 3u);
    EXPECT_EQ((*hunks)[0].oldFirst, 2u);
    EXPECT_EQ((*hunks)[0].oldCount, 2u);
    EXPECT_EQ((*hunks)[0].newFirst, 4u);
    EXPECT_EQ((*hunks)[0].newCount, 1u);
    EXPECT_EQ((*hunks)[1].oldFirst, 8u);
    EXPECT_EQ((*hunks)[1].oldCount, 0u);
    EXPECT_EQ((*hunks)[1].newCount, 2u);
    EXPECT_EQ((*hunks)[2].newFirst, 12u);
    EXPECT_EQ((*hunks)[2].newCount, 0u);
    EXPECT_FALSE(HunksOf("Binary files differ\n"));
    EXPECT_TRUE(HunksOf("")->empty());
}

TEST(Hunks, HeadOfAUnifiedOneIsRead) {
    const auto hunk = UnifiedHunkOf("@@ -2,3 +1,0 @@ int main()");
    ASSERT_TRUE(hunk);
    EXPECT_EQ(hunk->oldFirst, 2u);
    EXPECT_EQ(hunk->oldCount, 3u);
    EXPECT_EQ(hunk->newFirst, 2u);
    EXPECT_EQ(hunk->newCount, 0u);
    EXPECT_EQ(UnifiedHunkOf("@@ -7 +8 @@")->newCount, 1u);
    for (const char* other : {"", "@@", "@@ -7 @@", "@@ -a +b @@", "--- f", " @@ -7 +8 @@", "@@ -7, +8 @@"})
        EXPECT_FALSE(UnifiedHunkOf(other)) << other;
}

TEST(Adoption, LineWithoutPlaceholdersIsTakenOver) {
    const Adoption adoption = Adopt("a\nrealm = ${realm}\nb\n", "a\nrealm = EXAMPLE.ORG\nb\n",
                                    "x\nrealm = EXAMPLE.ORG\nb\n", "1c1\n");
    EXPECT_EQ(adoption.templateText, "x\nrealm = ${realm}\nb\n");
    EXPECT_THAT(adoption.refused, IsEmpty());
}

TEST(Adoption, ChangedLineKeepsItsPlaceholders) {
    EXPECT_EQ(Adopt("r = ${realm} ${domain}\n", "r = EXAMPLE.ORG example.org\n",
                    "realm = EXAMPLE.ORG, example.org;\n", "1c1\n")
                  .templateText,
              "realm = ${realm}, ${domain};\n");
}

TEST(Adoption, ChangedValueIsRefusedWithItsLineAndPlaceholder) {
    const Adoption adoption =
        Adopt("a\nr = ${realm}\n", "a\nr = EXAMPLE.ORG\n", "a\nr = OTHER.ORG\n", "2c2\n");
    ASSERT_EQ(adoption.refused.size(), 1u);
    EXPECT_EQ(adoption.refused[0].line, 2u);
    EXPECT_THAT(adoption.refused[0].placeholders, ElementsAre("${realm}"));
}

TEST(Adoption, ValueThatStandsInTheLineTwiceIsRefused) {
    EXPECT_EQ(Adopt("n = ${one}\n", "n = 1\n", "n = 1 1\n", "1c1\n").refused.size(), 1u);
    EXPECT_EQ(Adopt("n = ${one}\n", "n = 1\n", "n = 11\n", "1c1\n").refused.size(), 1u);
}

TEST(Adoption, LineOfManyPlaceholdersInManyWaysIsRefusedInNoTime) {
    std::string templateLine;
    for (int i = 0; i < 40; ++i)
        templateLine += "${one}";
    const std::string edited(80, '1');
    EXPECT_EQ(
        Adopt(templateLine + "${realm}\n", std::string(40, '1') + "EXAMPLE.ORG\n", edited + "\n", "1c1\n")
            .refused.size(),
        1u);
}

TEST(Adoption, EmptyValueCannotBeFound) {
    EXPECT_EQ(Adopt("n = ${none}\n", "n = \n", "n =  # x\n", "1c1\n").refused.size(), 1u);
}

TEST(Adoption, LinesThatWerePutInComeBehindTheLineBeforeThem) {
    EXPECT_EQ(Adopt("a\n${realm}\n", "a\nEXAMPLE.ORG\n", "a\nnew\nEXAMPLE.ORG\n", "1a2\n").templateText,
              "a\nnew\n${realm}\n");
    EXPECT_EQ(Adopt("a\n", "a\n", "new\na\n", "0a1\n").templateText, "new\na\n");
    EXPECT_EQ(Adopt("a\n", "a\n", "a\nnew\n", "1a2\n").templateText, "a\nnew\n");
}

TEST(Adoption, LineThatWasTakenOutGoesWithItsPlaceholder) {
    EXPECT_EQ(Adopt("a\n${realm}\nb\n", "a\nEXAMPLE.ORG\nb\n", "a\nb\n", "2d1\n").templateText, "a\nb\n");
}

TEST(Adoption, LineThatWasMovedTakesItsPlaceholdersAlong) {
    EXPECT_EQ(Adopt("r ${realm}\na\nb\n", "r EXAMPLE.ORG\na\nb\n", "a\nb\nr EXAMPLE.ORG\n", "1d0\n3a3\n")
                  .templateText,
              "a\nb\nr ${realm}\n");
    EXPECT_EQ(Adopt("a\nb\nr ${realm}\n", "a\nb\nr EXAMPLE.ORG\n", "r EXAMPLE.ORG\na\nb\n", "0a1\n3d3\n")
                  .templateText,
              "r ${realm}\na\nb\n");
    const Adoption replaced =
        Adopt("r ${realm}\na\nb\n", "r EXAMPLE.ORG\na\nb\n", "c\na\nb\nr EXAMPLE.ORG\n", "1c1\n3a4\n");
    EXPECT_THAT(replaced.refused, IsEmpty());
    EXPECT_EQ(replaced.templateText, "c\na\nb\nr ${realm}\n");
}

TEST(Adoption, LineThatWasMovedAndMayBeOneOfTwoIsRefused) {
    const StringMap values = {{"${one}", "1"}, {"${other}", "1"}};
    const Adoption adoption = AdoptEdit("n ${one}\nn ${other}\na\n", "n 1\nn 1\na\n", "a\nn 1\n",
                                        HunksOf("1,2d0\n3a2\n").value(), values);
    ASSERT_EQ(adoption.refused.size(), 1u);
    EXPECT_EQ(adoption.refused[0].line, 2u);
}

TEST(Adoption, CommentsOfTheTemplateStay) {
    const std::string comment = "# --ZET_TEMPLATE_COMMENT--\n# why\n# --ZET_COMMENT_END--\n";
    EXPECT_EQ(Adopt(comment + "a\n" + comment + "${realm}\n", "a\nEXAMPLE.ORG\n", "x\nEXAMPLE.ORG\ny\n",
                    "1c1\n2a3\n")
                  .templateText,
              comment + "x\n" + comment + "${realm}\ny\n");
}

TEST(Adoption, ChangedLineIsFoundAmongNewOnes) {
    EXPECT_EQ(
        Adopt("${realm}\nz\n", "EXAMPLE.ORG\nz\n", "n1\nto EXAMPLE.ORG\nn2\nz\n", "1c1,3\n").templateText,
        "n1\nto ${realm}\nn2\nz\n");
}

TEST(Adoption, CommentLinesHaveNoPlaceholders) {
    EXPECT_EQ(Adopt("# ${realm}\n", "# ${realm}\n", "# other\n", "1c1\n").templateText, "# other\n");
}

TEST(Adoption, LastLineMayLackItsEnd) {
    EXPECT_EQ(Adopt("a\nb\n", "a\nb\n", "a\nb", "2c2\n").templateText, "a\nb");
    EXPECT_EQ(Adopt("a\nb", "a\nb", "x\nb", "1c1\n").templateText, "x\nb");
}

/// A template line that makes three lines, between others.
Adoption AdoptSeveral(std::string_view edited, std::string_view difference) {
    const StringMap values = {{"${more}", "1\n2\n3"}, {"${realm}", "EXAMPLE.ORG"}};
    return AdoptEdit("a\n<${more}>\n${realm}\n", "a\n<1\n2\n3>\nEXAMPLE.ORG\n", edited,
                     HunksOf(difference).value(), values);
}

TEST(Adoption, LinesAroundAValueOfSeveralLinesAreTakenOver) {
    const Adoption adoption = AdoptSeveral("b\n<1\n2\n3>\nnew\nto EXAMPLE.ORG\n", "1c1\n5c5,6\n");
    EXPECT_THAT(adoption.refused, IsEmpty());
    EXPECT_EQ(adoption.templateText, "b\n<${more}>\nnew\nto ${realm}\n");
}

TEST(Adoption, ValueOfSeveralLinesIsTakenOutWhole) {
    EXPECT_EQ(AdoptSeveral("a\nEXAMPLE.ORG\n", "2,4d1\n").templateText, "a\n${realm}\n");
    EXPECT_EQ(AdoptSeveral("EXAMPLE.ORG\n", "1,4d0\n").templateText, "${realm}\n");
}

TEST(Adoption, ChangeInAValueOfSeveralLinesIsRefused) {
    for (const auto& [edited, difference] : StringMap{{"a\n<1\n2\n4>\nEXAMPLE.ORG\n", "4c4\n"},
                                                      {"a\n<1\n3>\nEXAMPLE.ORG\n", "3d2\n"},
                                                      {"a\n2\n3>\nEXAMPLE.ORG\n", "2d1\n"},
                                                      {"a\n<1\n2\n3>\n", "4,5c4\n"},
                                                      {"a\n<1\n", "3,5d2\n"},
                                                      {"a\n<1\nx\n2\n3>\nEXAMPLE.ORG\n", "2a3\n"},
                                                      {"a\nEXAMPLE.ORG\n<1\n2\n3>\n", "2,4d1\n5a3,5\n"},
                                                      {"b\nEXAMPLE.ORG\n", "1,4c1\n"}}) {
        const Adoption adoption = AdoptSeveral(edited, difference);
        ASSERT_EQ(adoption.refused.size(), 1u) << difference;
        EXPECT_THAT(adoption.refused[0].placeholders, ElementsAre("${more}")) << difference;
    }
}

TEST(Adoption, RenderingOfAnotherTemplateCannotBeTraced) {
    EXPECT_FALSE(Adopt("a\nb\n", "a\nx\ny\n", "a\n", "2,3d1\n").isTraceable);
}

}  // namespace
}  // namespace ZET::Text
