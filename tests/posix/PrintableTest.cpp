#include "posix/Printable.h"

#include <gtest/gtest.h>

namespace ZET {
namespace {

TEST(PrintableTest, OrdinaryTextStaysAsItIs) {
    for (const char* text :
         {"", "a b ~", "é ü €", "\\n", "\xc3\x80 \xc3\x9f", "\xe2\x82\xac \xf0\x9f\x98\x80"})
        EXPECT_EQ(Printable(text), text);
}

TEST(PrintableTest, EveryControlCharacterIsEscaped) {
    EXPECT_EQ(Printable("\n\r\t"), "\\n\\r\\t");
    EXPECT_EQ(Printable(std::string_view("\0\x01\x1b\x1f\x7f", 5)), "\\x00\\x01\\x1b\\x1f\\x7f");
    for (int byte = 0; byte < 256; byte++) {
        const std::string text(1, static_cast<char>(byte));
        const bool isControl = byte < 32 || byte >= 127;
        EXPECT_EQ(Printable(text) == text, !isControl) << byte;
    }
}

TEST(PrintableTest, WhatStandsAroundStaysAsItIs) {
    EXPECT_EQ(Printable("one\ntwo"), "one\\ntwo");
    EXPECT_EQ(Printable("\none ü two\n"), "\\none ü two\\n");
    EXPECT_EQ(Printable("ü one\x1b[31m é\xff~"), "ü one\\x1b[31m é\\xff~");
}

TEST(PrintableTest, EveryLateControlCharacterIsEscaped) {
    EXPECT_EQ(Printable("\xc2\x9b[31m"), "\\xc2\\x9b[31m");
    for (int byte = 0; byte < 256; byte++) {
        const std::string text = {'\xc2', static_cast<char>(byte)};
        EXPECT_EQ(Printable(text) == text, byte >= 0xa0 && byte <= 0xbf) << byte;
    }
}

TEST(PrintableTest, WhatTurnsTheDirectionIsEscaped) {
    EXPECT_EQ(Printable("a\xe2\x80\xae"
                        "fnoc"),
              "a\\xe2\\x80\\xaefnoc");
    for (int byte = 0x80; byte < 0xc0; byte++) {
        const std::string embedding = {'\xe2', '\x80', static_cast<char>(byte)};
        EXPECT_EQ(Printable(embedding) == embedding, byte < 0xaa || byte > 0xae) << byte;
        const std::string isolate = {'\xe2', '\x81', static_cast<char>(byte)};
        EXPECT_EQ(Printable(isolate) == isolate, byte < 0xa6 || byte > 0xa9) << byte;
    }
    EXPECT_EQ(Printable("\xe2\x80\x8f\xd7\x90"), "\xe2\x80\x8f\xd7\x90") << "a mark alone turns nothing";
}

TEST(PrintableTest, WhatIsNoCharacterIsEscaped) {
    EXPECT_EQ(Printable("a\x9b"
                        "31m"),
              "a\\x9b31m");
    EXPECT_EQ(Printable("\xff\xfe"), "\\xff\\xfe");
    EXPECT_EQ(Printable("a\xc2"), "a\\xc2");
    EXPECT_EQ(Printable(std::string_view("a\xc2\x9b", 2)), "a\\xc2");
    EXPECT_EQ(Printable("\xe2\x82"), "\\xe2\\x82");  // its end is missing
    EXPECT_EQ(Printable("\xc0\x9b"), "\\xc0\\x9b");  // in more bytes than it needs
    EXPECT_EQ(Printable("\xe0\x82\x9b"), "\\xe0\\x82\\x9b");
    EXPECT_EQ(Printable("\xed\xa0\x80"), "\\xed\\xa0\\x80");  // half of a pair
    EXPECT_EQ(Printable("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");
}

}  // namespace
}  // namespace ZET
