#include "posix/Printable.h"

#include <gtest/gtest.h>

namespace ZET {
namespace {

TEST(PrintableTest, OrdinaryTextStaysAsItIs) {
    for (const char* text : {"", "a b ~", "é ü €", "\\n", "\xff\xfe", "\xc3\x80 \xc3\x9f"})
        EXPECT_EQ(Printable(text), text);
}

TEST(PrintableTest, EveryControlCharacterIsEscaped) {
    EXPECT_EQ(Printable("\n\r\t"), "\\n\\r\\t");
    EXPECT_EQ(Printable(std::string_view("\0\x01\x1b\x1f\x7f", 5)), "\\x00\\x01\\x1b\\x1f\\x7f");
    for (int byte = 0; byte < 256; byte++) {
        const std::string text(1, static_cast<char>(byte));
        const bool isControl = byte < 32 || byte == 127;
        EXPECT_EQ(Printable(text) == text, !isControl) << byte;
    }
}

TEST(PrintableTest, EveryLateControlCharacterIsEscaped) {
    EXPECT_EQ(Printable("\xc2\x9b[31m"), "\\xc2\\x9b[31m");
    for (int byte = 0; byte < 256; byte++) {
        const std::string text = {'\xc2', static_cast<char>(byte)};
        const bool isControl = byte < 32 || (byte >= 0x7f && byte <= 0x9f);
        EXPECT_EQ(Printable(text) == text, !isControl) << byte;
    }
}

TEST(PrintableTest, BeginningOfALateControlCharacterAtTheEndStays) {
    EXPECT_EQ(Printable("a\xc2"), "a\xc2");
    EXPECT_EQ(Printable(std::string_view("a\xc2\x9b", 2)), "a\xc2");
}

}  // namespace
}  // namespace ZET
