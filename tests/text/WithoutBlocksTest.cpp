#include "text/WithoutBlocks.h"

#include <gtest/gtest.h>

#include "text/Markers.h"
#include "zet/ZETFormat.h"

namespace ZET::Text {
namespace {

std::string Block(const std::string& content) {
    return std::string(ZETBeginMarker) + "\n" + content + ZETEndMarker + "\n";
}

std::string Former(const std::string& line) {
    return ZETFormerLinePrefix + line + "\n";
}

std::string Notice() {
    return std::string(ZETNoticeMarker) + "\n# text\n" + ZETCommentEndMarker + "\n";
}

TEST(WithoutBlocks, TextOfOthersStaysByteForByte) {
    for (const char* text : {"", "\n", "a", "a\n", "\n\na\r\nb", "# comment\n a=1 \n"})
        EXPECT_EQ(WithoutBlocks(text), text);
}

TEST(WithoutBlocks, FormerLineComesBack) {
    EXPECT_EQ(WithoutBlocks("a=1\n" + Former("b=2") + Block("b=3\n") + "c=4\n"), "a=1\nb=2\nc=4\n");
}

TEST(WithoutBlocks, AppendedBlockGoes) {
    EXPECT_EQ(WithoutBlocks("a=1\n" + Block("b=3\nc\n")), "a=1\n");
}

TEST(WithoutBlocks, EachBlockGoes) {
    EXPECT_EQ(WithoutBlocks(Former("a") + Block("x\n") + "b\n" + Former("") + Block("y\n") + Block("z\n")),
              "a\nb\n\n");
}

TEST(WithoutBlocks, NoticeGoes) {
    EXPECT_EQ(WithoutBlocks(Notice() + "a=1\n"), "a=1\n");
}

TEST(WithoutBlocks, FormerLineWithoutABlockStays) {
    EXPECT_EQ(WithoutBlocks(Former("a") + "b\n" + Block("c\n")), Former("a") + "b\n");
}

TEST(WithoutBlocks, FormerLineKeepsItsEnd) {
    EXPECT_EQ(WithoutBlocks(Former("a=1\r") + Block("a=2\r\n") + "b\r\n"), "a=1\r\nb\r\n");
}

TEST(WithoutBlocks, OpenEndStaysWhereALineOfOthersHasIt) {
    EXPECT_EQ(WithoutBlocks(Former("a") + Block("x\n") + "b"), "a\nb");
    EXPECT_EQ(WithoutBlocks("b\n" + Former("a") + Block("x\n").substr(0, Block("x\n").size() - 1)), "b\na\n");
}

TEST(WithoutBlocksOf, OnlyBlocksWithTheLineGo) {
    const auto isB = [](std::string_view line) { return line == "b=3"; };
    EXPECT_EQ(WithoutBlocksOf(
                  Notice() + Former("b=2") + Block("b=3\n") + Former("a=1") + Block("a=3\n") + "c", isB),
              Notice() + "b=2\n" + Former("a=1") + Block("a=3\n") + "c");
    EXPECT_EQ(WithoutBlocksOf("b=3\n" + Block("b=3\nc\n"), isB), "b=3\n" + Block("b=3\nc\n"))
        << "what a block of the system never has stays";
}

}  // namespace
}  // namespace ZET::Text
