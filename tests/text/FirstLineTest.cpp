#include "text/FirstLine.h"

#include <gtest/gtest.h>

namespace ZET::Text {
namespace {

TEST(FirstLine, EmptyLinesBeforeItAreCounted) {
    EXPECT_EQ(FirstLineOf("a\nb").number, 1u);
    EXPECT_EQ(FirstLineOf("\n\na\nb").number, 3u);
    EXPECT_EQ(FirstLineOf("\n\na\nb").text, "a");
    EXPECT_EQ(FirstLineOf("a").text, "a");
}

TEST(FirstLine, TextOfEmptyLinesHasNone) {
    EXPECT_EQ(FirstLineOf("").number, 0u);
    EXPECT_EQ(FirstLineOf("\n\n").number, 0u);
    EXPECT_FALSE(MustComeFirst(FirstLineOf("\n").text));
}

TEST(FirstLine, LineThatNamesTheFormatMustComeFirst) {
    for (const char* line : {"#!/bin/sh", "#!/bin/sh\r", "<?xml version=\"1.0\"?>", "<?php", "{", " { ",
                             "{\r", "[", "{ \"a\": 1,", "{\"a\":1}", " {}", "[{", "[ {\"a\": 1},",
                             "[\"a\", \"b\"]", "[ \"a\",", "<!DOCTYPE busconfig PUBLIC",
                             "\xef\xbb\xbf"
                             "a=1"})
        EXPECT_TRUE(MustComeFirst(line)) << line;
}

TEST(FirstLine, OtherLinesMayFollowANotice) {
    for (const char* line : {"", "# !", "a=1", "[section]", "<VirtualHost *:80>", "{ a", "# {", "options {",
                             "{{ a }}", "{%", "[[edits]]", "[\"a b\"]", "[ \"a,\" ]", "[]"})
        EXPECT_FALSE(MustComeFirst(line)) << line;
}

TEST(FirstLine, Utf16IsKnownByItsMark) {
    EXPECT_TRUE(
        IsUtf16("\xff\xfe"
                "a"));
    EXPECT_TRUE(IsUtf16("\xfe\xff"));
    EXPECT_FALSE(IsUtf16("\xef\xbb\xbf"));
    EXPECT_FALSE(IsUtf16("a\xff\xfe"));
    EXPECT_FALSE(IsUtf16(""));
}

}  // namespace
}  // namespace ZET::Text
