#include "posix/ShortText.h"

#include <gtest/gtest.h>

#include <string>

namespace ZET {
namespace {

constexpr std::size_t kLongest = 400;  // well beyond what is searched without a call of the library

TEST(FindNear, FindsAtEveryDistance) {
    for (std::size_t size = 1; size <= kLongest; ++size) {
        for (std::size_t position = 0; position < size; ++position) {
            std::string text(size, '\x0b');
            text[position] = '\n';
            ASSERT_EQ(FindNear(text, '\n'), position) << size;
        }
    }
}

TEST(FindNear, FindsTheFirstOfSeveral) {
    for (std::size_t position = 0; position < kLongest; ++position)
        ASSERT_EQ(FindNear(std::string(position, 'x') + "\nx\n\n", '\n'), position);
}

TEST(FindNear, FindsNothingWhereThereIsNone) {
    for (std::size_t size = 0; size < kLongest; ++size) {
        const std::string text = std::string(size, 'x') + '\n';
        ASSERT_EQ(FindNear(std::string_view(text).substr(0, size), '\n'), std::string_view::npos) << size;
    }
}

TEST(CopyNear, CopiesEveryByteAndNoOther) {
    for (std::size_t size = 0; size < 100; ++size) {
        std::string from(size, '\0');
        for (std::size_t place = 0; place < size; ++place)
            from[place] = static_cast<char>('!' + place);
        std::string to(size + 2, '.');
        CopyNear(to.data() + 1, from);
        EXPECT_EQ(to, "." + from + ".") << size;
    }
}

TEST(IsSame, ComparesEveryByte) {
    for (std::size_t size = 0; size < 100; ++size) {
        const std::string text(size, 'x');
        EXPECT_TRUE(IsSame(text, std::string(size, 'x')));
        EXPECT_FALSE(IsSame(text, text + 'x'));
        for (std::size_t place = 0; place < size; ++place) {
            std::string other = text;
            other[place] = 'y';
            EXPECT_FALSE(IsSame(text, other)) << size << " " << place;
        }
    }
}

}  // namespace
}  // namespace ZET
