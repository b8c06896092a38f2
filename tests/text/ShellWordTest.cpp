#include "text/ShellWord.h"

#include <gtest/gtest.h>

namespace ZET::Text {
namespace {

TEST(ShellWord, PlainWordsStayAsTheyAre) {
    for (const char* word : {"conf", "/etc/a-b_c.d", "A=1", "--root", "a@b:1,2+3%"})
        EXPECT_EQ(ShellWord(word), word);
}

TEST(ShellWord, WhatAShellWouldReadIsQuoted) {
    EXPECT_EQ(ShellWord(""), "''");
    EXPECT_EQ(ShellWord("d d"), "'d d'");
    EXPECT_EQ(ShellWord("it's"), "'it'\\''s'");
    EXPECT_EQ(ShellWord("$x;~"), "'$x;~'");
    EXPECT_EQ(ShellWord("/etc/s*"), "'/etc/s*'");
    EXPECT_EQ(ShellWord("***x"), "'***x'");
    EXPECT_EQ(ShellWord("x***"), "'x***'");
    EXPECT_EQ(ShellWordOrHidden("d d"), "'d d'");
    EXPECT_EQ(ShellWordOrHidden("x*"), "'x*'");
}

TEST(ShellWord, WhatCannotBeShownIsEscapedForAShell) {
    EXPECT_EQ(ShellWord("a\nb"), "$'a\\nb'");
    EXPECT_EQ(ShellWord("it's\t\\"), "$'it\\'s\\t\\\\'");
    EXPECT_EQ(ShellWord("\x1b[1m"), "$'\\x1b[1m'");
    EXPECT_EQ(ShellWord("\xff"
                        "a"),
              "$'\\xffa'");
    EXPECT_EQ(ShellWord("\xe2\x80\xae."), "$'\\xe2\\x80\\xae.'");
    EXPECT_EQ(ShellWord("\xc3\xa4"), "'\xc3\xa4'");
}

TEST(ShellWord, WhatIsHiddenIsShownAsItIs) {
    EXPECT_EQ(ShellWordOrHidden("***"), "***");
    EXPECT_EQ(ShellWordOrHidden("--value=realm=***"), "--value=realm=***");
    EXPECT_EQ(ShellWordOrHidden("^x=***"), "'^x=***'");
}

TEST(ShellWord, PathIsNoOption) {
    EXPECT_EQ(ShellPath("-dd"), "./-dd");
    EXPECT_EQ(ShellPath("-d d"), "'./-d d'");
    EXPECT_EQ(ShellPath("/-dd"), "/-dd");
    EXPECT_EQ(ShellPath("d-d"), "d-d");
}

}  // namespace
}  // namespace ZET::Text
