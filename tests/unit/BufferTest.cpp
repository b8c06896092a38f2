#include "Buffer.h"

#include <cerrno>
#include <new>
#include <string>

#include "ModuleTest.h"
#include "SystemCalls.h"

namespace ZET {
namespace {

constexpr std::size_t kMebibyte = std::size_t{1} << 20;

TEST(BufferTest, BytesStayWhileItGrowsFromSmallToMappedToLarger) {
    Buffer buffer;
    std::string expected;
    for (std::size_t i = 0; i < 100000; ++i) {
        const std::string piece = "some text " + std::to_string(i) + "\n";
        expected += piece;
        buffer.Append(piece);
    }
    while (expected.size() < 9 * kMebibyte)
        expected += expected;
    buffer.Append(std::string_view(expected).substr(buffer.Size()));
    EXPECT_TRUE(buffer.View() == expected);
}

TEST(BufferTest, MappingThatCannotGrowIsOutOfMemoryAndKeepsItsBytes) {
    const std::string text(3 * kMebibyte, 'x');
    Buffer buffer;
    buffer.Append(text);
    {
        const SystemCalls lies({.failing = {{"mremap", ENOMEM}}});
        EXPECT_THROW(buffer.Append(text), std::bad_alloc);
        EXPECT_EQ(lies.Record().counts.at("mremap"), 1U);
    }
    EXPECT_TRUE(buffer.View() == text);
    buffer.Append("y");
    EXPECT_TRUE(buffer.View() == text + "y");
}

TEST(BufferTest, SizeThatNoMemoryHoldsIsOutOfMemoryAndKeepsTheBytes) {
    Buffer buffer;
    buffer.Append("x");
    EXPECT_THROW(buffer.Reserve(std::size_t{1} << 62), std::bad_alloc);
    EXPECT_EQ(buffer.View(), "x");
    buffer.Append("y");
    EXPECT_EQ(buffer.View(), "xy");
}

/// A file that outgrows its mapping.
class GrowingTextTest : public ModuleTest {};

TEST_F(GrowingTextTest, TextOutlivesALineForWhichItsMappingCannotGrow) {
    std::string text(3 * kMebibyte, 'x');
    text += '\n';
    CZETConfigFile file(m_core);
    ASSERT_TRUE(file.Open(Write("target", text), "", true));
    m_core.SetMatcher([](const std::string&, const std::string&) { return false; });
    {
        const SystemCalls lies({.failing = {{"mremap", ENOMEM}}});
        EXPECT_THROW(file.SetLine("^y", std::string(4 * kMebibyte, 'y')), std::bad_alloc);
        EXPECT_EQ(lies.Record().counts.at("mremap"), 1U);
    }
    file.Save(true);
    EXPECT_TRUE(Read("target") == text);
}

}  // namespace
}  // namespace ZET
