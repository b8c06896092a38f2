#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "text/Lines.h"

namespace ZET::Deploy {
namespace {

class ReadLinesTest : public testing::Test {
  protected:
    ~ReadLinesTest() override { std::filesystem::remove(m_path); }

    std::vector<std::string> LinesOf(const std::string& text) {
        std::ofstream(m_path, std::ios::binary) << text;
        std::vector<std::string> lines;
        ReadChunks(m_path, [&](std::string_view piece) {
            for (const Text::TextLine& line : Text::SplitLines(piece))
                lines.emplace_back(line.text);
        });
        return lines;
    }

    const std::string m_path =
        (std::filesystem::temp_directory_path() / ("zet-lines." + std::to_string(::getpid()))).string();
};

using Lines = std::vector<std::string>;

TEST_F(ReadLinesTest, LineFeedsEndLinesAndAreNoPartOfThem) {
    EXPECT_EQ(LinesOf(""), Lines{});
    EXPECT_EQ(LinesOf("\n"), Lines{""});
    EXPECT_EQ(LinesOf("a\n\nb"), (Lines{"a", "", "b"}));
    EXPECT_EQ(LinesOf(std::string("a\0b\n", 4)), Lines{std::string("a\0b", 3)});
}

TEST_F(ReadLinesTest, LinesOfAnyLengthComeAsAWhole) {
    constexpr std::size_t kBlock = std::size_t{128} << 10;
    for (const std::size_t length : {kBlock - 1, kBlock, kBlock + 1, 3 * kBlock, 4 * kBlock, 4 * kBlock - 1,
                                     40 * kBlock + 7, 80 * kBlock}) {
        const std::string longLine(length, 'x');
        EXPECT_TRUE(LinesOf(longLine + "\na\n") == (Lines{longLine, "a"})) << length;
        EXPECT_TRUE(LinesOf("a\n" + longLine) == (Lines{"a", longLine})) << length;
    }
}

TEST_F(ReadLinesTest, PiecesAreTheTextCutBetweenLines) {
    constexpr std::size_t kBlock = std::size_t{128} << 10;
    for (const std::size_t length :
         {std::size_t{0}, std::size_t{9}, kBlock - 2, kBlock - 1, kBlock, 3 * kBlock, 17 * kBlock}) {
        for (const char* rest : {"", "\n", "\nlast", "\n\nlast\n"}) {
            const std::string text = "a\nb\n" + std::string(length, 'x') + rest;
            LinesOf(text);
            std::string read;
            ReadChunks(m_path, [&](std::string_view lines) {
                EXPECT_TRUE(read.empty() || read.ends_with('\n'));
                EXPECT_FALSE(lines.empty());
                read += lines;
            });
            EXPECT_TRUE(read == text) << length << rest;
        }
    }
}

TEST_F(ReadLinesTest, LineThatGrowsWhileItIsReadComesAsAWhole) {
    constexpr std::size_t kBlock = std::size_t{128} << 10;
    const std::string more(40 * kBlock, 'y');
    std::ofstream(m_path, std::ios::binary) << "a\n" << std::string(2 * kBlock, 'x');
    std::vector<std::size_t> sizes;
    ReadChunks(m_path, [&](std::string_view lines) {
        if (sizes.empty()) std::ofstream(m_path, std::ios::binary | std::ios::app) << more;
        sizes.push_back(lines.size());
    });
    EXPECT_EQ(sizes, (std::vector<std::size_t>{2, 42 * kBlock}));
}

TEST_F(ReadLinesTest, FileThatIsNotThereIsAFailure) {
    EXPECT_THROW(ReadChunks(m_path, [](std::string_view) {}), Failure);
}

}  // namespace
}  // namespace ZET::Deploy
