#include "text/ShownWords.h"

#include <gtest/gtest.h>

namespace ZET::Text {
namespace {

using Words = std::vector<std::string>;

TEST(ShownWordsTest, WordsThatAreAPartOfATextAreHidden) {
    EXPECT_EQ(WordsWithoutTexts({"param", "set", "file", "name", "value"}, {"a=1\nname=value\n"}),
              (Words{"param", "set", "file", "***", "***"}));
}

TEST(ShownWordsTest, OfAnAssignmentOnlyTheValueIsHidden) {
    EXPECT_EQ(
        WordsWithoutTexts({"template", "process", "t", "f", "--value=pw=x=y", "--value", "pw=x=y"}, {"x=y"}),
        (Words{"template", "process", "t", "f", "--value=pw=***", "--value", "pw=***"}));
}

TEST(ShownWordsTest, WordsOfTheCommandAndOptionsStay) {
    EXPECT_EQ(WordsWithoutTexts({"-q", "param", "set", "--force", "set"}, {"-q param set --force"}),
              (Words{"-q", "param", "set", "--force", "***"}));
}

TEST(ShownWordsTest, PlacesAndNamesOfTheFilesStay) {
    const Words words = {"--root", "/r",  "-c",       "zet.conf",    "--module=/r/m",
                         "param",  "set", "etc/file", "/r/etc/file", "/r"};
    EXPECT_EQ(WordsWithoutTexts(words, {"/r zet.conf /r/m etc/file"}, {"/etc/file"}),
              (Words{"--root", "/r", "-c", "zet.conf", "--module=/r/m", "param", "set", "etc/file",
                     "/r/etc/file", "***"}));
}

TEST(ShownWordsTest, WhatOnlyLooksLikeAPlaceIsHidden) {
    EXPECT_EQ(WordsWithoutTexts({"param", "set", "f", "n", "--", "--root", "pw"}, {"pw"}),
              (Words{"param", "set", "f", "n", "--", "--root", "***"}));
    EXPECT_EQ(WordsWithoutTexts({"param", "set", "f", "n", "--", "--root=pw"}, {"pw"}),
              (Words{"param", "set", "f", "n", "--", "--root=***"}));
    EXPECT_EQ(WordsWithoutTexts({"param", "set", "-m", "--root", "pw"}, {"pw"}),
              (Words{"param", "set", "-m", "--root", "***"}));
    EXPECT_EQ(WordsWithoutTexts({"param", "set", "f", "n", "le"}, {"le"}, {"/etc/file"}),
              (Words{"param", "set", "f", "n", "***"}));
}

TEST(ShownWordsTest, WhereAnyWordMayBeOfATextOnlyWhatTellsThePlaceStays) {
    const Words words = {"param",    "set", "--root",     "/r", "/r/etc/file",
                         "etc/file", "le",  "--value=pw", "",   "-q"};
    EXPECT_EQ(WordsWithoutAnyText(words, {"/etc/file"}), (Words{"param", "set", "--root", "/r", "/r/etc/file",
                                                                "etc/file", "***", "--value=***", "", "-q"}));
    EXPECT_EQ(WordsWithoutAnyText({"param", "set", "file"}, {}), (Words{"param", "set", "***"}));
}

TEST(ShownWordsTest, NothingIsHiddenOfOtherTexts) {
    EXPECT_EQ(WordsWithoutTexts({"param", "set", "f", "x", ""}, {"abc"}),
              (Words{"param", "set", "f", "x", ""}));
}

}  // namespace
}  // namespace ZET::Text
