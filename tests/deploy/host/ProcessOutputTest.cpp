#include "deploy/host/ProcessOutput.h"

#include <gtest/gtest.h>

namespace ZET::Deploy {
namespace {

std::string TextOf(std::size_t kept, const std::string& text, std::size_t part) {
    ProcessOutput output(kept);
    for (std::size_t i = 0; i < text.size(); i += part)
        output.Append(std::string_view(text).substr(i, part));
    return output.Text();
}

std::string Counted(std::size_t size) {
    std::string text;
    for (std::size_t i = 0; i < size; ++i)
        text += static_cast<char>('a' + i % 26);
    return text;
}

TEST(ProcessOutputTest, WithoutBoundsAllIsKept) {
    for (const std::size_t size : {0, 1, 100, 10000})
        EXPECT_EQ(TextOf(0, Counted(size), 7), Counted(size));
}

TEST(ProcessOutputTest, WhatFitsIntoBothEndsIsKeptWhole) {
    for (std::size_t size = 0; size <= 20; ++size)
        for (const std::size_t part : {1, 3, 10, 20})
            EXPECT_EQ(TextOf(10, Counted(size), part), Counted(size)) << size << " in parts of " << part;
}

TEST(ProcessOutputTest, OfWhatDoesNotFitTheMiddleIsLeftOutAndCounted) {
    for (const std::size_t size : {21, 22, 30, 31, 40, 41, 1000}) {
        const std::string text = Counted(size);
        const std::string expected = text.substr(0, 10) + "\n... " + std::to_string(size - 20) +
                                     " bytes are left out here ...\n" + text.substr(size - 10);
        for (const std::size_t part : {1, 3, 10, 20, 1000})
            EXPECT_EQ(TextOf(10, text, part), expected) << size << " in parts of " << part;
    }
}

}  // namespace
}  // namespace ZET::Deploy
