#include "LineFeed.h"

#include <gtest/gtest.h>

#include <string>

namespace ZET {
namespace {

constexpr std::size_t kLongest = 400;  // well beyond what is searched without a call of the library

TEST(LineFeed, IsFoundAtEveryDistance) {
    for (std::size_t size = 1; size <= kLongest; ++size) {
        for (std::size_t position = 0; position < size; ++position) {
            std::string text(size, '\x0b');
            text[position] = '\n';
            ASSERT_EQ(FindLineFeed(text), position) << size;
        }
    }
}

TEST(LineFeed, FirstOfSeveralIsFound) {
    for (std::size_t position = 0; position < kLongest; ++position)
        ASSERT_EQ(FindLineFeed(std::string(position, 'x') + "\nx\n\n"), position);
}

TEST(LineFeed, NothingIsFoundWhereThereIsNone) {
    for (std::size_t size = 0; size < kLongest; ++size) {
        const std::string text = std::string(size, 'x') + '\n';
        ASSERT_EQ(FindLineFeed(std::string_view(text).substr(0, size)), std::string_view::npos) << size;
    }
}

}  // namespace
}  // namespace ZET
