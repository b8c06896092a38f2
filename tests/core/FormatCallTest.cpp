#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <string>

#include "zet/ZETFormatCall.h"

namespace ZET {
namespace {

TEST(FormatCall, FormatsByTheConventionsOfPrintf) {
    CZETFormatCall format("source", "Function", 1);
    EXPECT_STREQ(format(2, "Unexpected token '%s' in line %d.", "x", 7), "Unexpected token 'x' in line 7.");
}

TEST(FormatCall, ErrorTextIsThatOfTheCallersErrno) {
    errno = ENOSPC;
    CZETFormatCall format("source", "Function", 1);
    EXPECT_STREQ(format(1, "Error stat '%s':%m", "/x"), "Error stat '/x':No space left on device");
}

TEST(FormatCall, SecondTextStillSeesTheCallersErrno) {
    CZETFormatCall format("source", "Function", 1);
    errno = ENOENT;
    format(0, "%m");
    EXPECT_EQ(errno, ENOENT);
    EXPECT_STREQ(format(0, "%m"), "No such file or directory");
}

TEST(FormatCall, ConversionsInAnArgumentAreHarmless) {
    CZETFormatCall format("source", "Function", 1);
    EXPECT_STREQ(format(1, "Failed to open file '%s'.", "%s%n%m"), "Failed to open file '%s%n%m'.");
}

TEST(FormatCall, FormerTextMayBeAnArgument) {
    CZETFormatCall format("source", "Function", 1);
    const char* first = format(1, "%s", "inner text that is long enough not to be stored in place");
    EXPECT_STREQ(format(1, "[%s]", first), "[inner text that is long enough not to be stored in place]");
}

TEST(FormatCall, LongTextIsWhole) {
    CZETFormatCall format("source", "Function", 1);
    const std::string text(1'000'000, 'x');
    EXPECT_EQ(format(1, "%s", text.c_str()), text);
}

TEST(FormatCall, TextOfAnyLengthIsWhole) {
    CZETFormatCall format("source", "Function", 1);
    for (std::size_t length = 0; length < 1100; ++length) {
        const std::string text(length, 'x');
        EXPECT_EQ(format(2, "%s%s", text.c_str(), "end"), text + "end");
    }
}

TEST(FormatCall, TextThatCannotBeFormattedIsNull) {
    CZETFormatCall format("source", "Function", 1);
    const wchar_t invalid[] = {static_cast<wchar_t>(0x7FFFFFFF), 0};
    EXPECT_EQ(format(1, "%ls", invalid), nullptr);
    EXPECT_STREQ(format(1, "%s", "afterwards it works again"), "afterwards it works again");
}

TEST(FormatCall, MissingFormatIsNull) {
    CZETFormatCall format("source", "Function", 1);
    const char* none = nullptr;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
    EXPECT_EQ(format(0, none), nullptr);
#pragma GCC diagnostic pop
}

}  // namespace
}  // namespace ZET
