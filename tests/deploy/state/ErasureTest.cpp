#include "deploy/state/store/Erasure.h"

#include <gtest/gtest.h>

namespace ZET::Deploy {
namespace {

using Words = std::vector<std::string>;

TEST(ErasureTest, WordsThatAreAPartOfATextAreHidden) {
    EXPECT_EQ(WordsWithoutTexts({"param", "set", "file", "name", "value"}, {"a=1\nname=value\n"}),
              (Words{"param", "set", "file", "***", "***"}));
}

TEST(ErasureTest, OfAnAssignmentOnlyTheValueIsHidden) {
    EXPECT_EQ(
        WordsWithoutTexts({"template", "process", "t", "f", "--value=pw=x=y", "--value", "pw=x=y"}, {"x=y"}),
        (Words{"template", "process", "t", "f", "--value=pw=***", "--value", "pw=***"}));
}

TEST(ErasureTest, WordsOfTheCommandAndOptionsStay) {
    EXPECT_EQ(WordsWithoutTexts({"-q", "param", "set", "--force", "set"}, {"-q param set --force"}),
              (Words{"-q", "param", "set", "--force", "***"}));
}

TEST(ErasureTest, NothingIsHiddenOfOtherTexts) {
    EXPECT_EQ(WordsWithoutTexts({"param", "set", "f", "x", ""}, {"abc"}),
              (Words{"param", "set", "f", "x", ""}));
}

}  // namespace
}  // namespace ZET::Deploy
