#include "deploy/state/store/TextMark.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>

namespace ZET::Deploy {
namespace {

/// What another implementation of SipHash-1-3 makes with a key of zeros.
constexpr std::pair<const char*, std::int64_t> kKnown[] = {
    {"a", 4644417185603328019},         {"abc", -4594863902769663758},
    {"1234567", -6684075128579576191},  {"12345678", 3785724242978802311},
    {"123456789", 1133797698992234447}, {"a text of more than sixteen bytes", -4470737083672532962},
};

TEST(TextMarkTest, IsTheSipHashOfTheText) {
    const std::string key(kSizeOfMarkKey, '\0');
    for (const auto& [text, mark] : kKnown)
        EXPECT_EQ(MarkOf(key, text), mark) << text;
}

TEST(TextMarkTest, EachByteOfTextAndKeyCounts) {
    const std::string key = "sixteen bytes...";
    const std::string text(50, 'x');
    std::set<std::int64_t> marks = {MarkOf(key, text), MarkOf(key, text + '\0')};
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::string other = text;
        other[i] = 'y';
        marks.insert(MarkOf(key, other));
        marks.insert(MarkOf(key, text.substr(0, i)));
    }
    for (std::size_t i = 0; i < key.size(); ++i) {
        std::string other = key;
        other[i] = 'X';
        marks.insert(MarkOf(other, text));
    }
    EXPECT_EQ(marks.size(), 2 + 2 * text.size() + key.size());
}

}  // namespace
}  // namespace ZET::Deploy
