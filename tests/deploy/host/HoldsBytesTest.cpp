#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>

#include "deploy/host/FileBytes.h"
#include "posix/Descriptor.h"

namespace ZET::Deploy {
namespace {

constexpr std::size_t kBlock = std::size_t{32} << 10;

class HoldsBytesTest : public testing::TestWithParam<std::size_t> {
  protected:
    ~HoldsBytesTest() override { std::filesystem::remove(m_path); }

    /// By name and by descriptor.
    bool IsHeld(const std::string& bytes, const std::string& text) {
        std::ofstream(m_path, std::ios::binary) << text;
        const Descriptor file(open(m_path.c_str(), O_RDONLY | O_CLOEXEC));
        const bool isHeld = HoldsBytes(m_path, bytes);
        EXPECT_EQ(HoldsBytes(file, m_path, bytes), isHeld);
        return isHeld;
    }

    const std::string m_path =
        (std::filesystem::temp_directory_path() / ("zet-bytes." + std::to_string(::getpid()))).string();
};

TEST_P(HoldsBytesTest, AFileHoldsItsBytesAndNoOthers) {
    std::string text(GetParam(), 'x');
    EXPECT_TRUE(IsHeld(text, text));
    EXPECT_FALSE(IsHeld(text, text + "x"));
    EXPECT_FALSE(IsHeld(text, text + std::string(kBlock, 'x')));
    if (text.empty()) return;
    std::string other = text;
    other.back() = 'y';
    EXPECT_FALSE(IsHeld(text, other));
    EXPECT_FALSE(IsHeld(text, text.substr(1)));
    EXPECT_FALSE(IsHeld(text, ""));
}

INSTANTIATE_TEST_SUITE_P(AroundWhatIsReadAtOnce, HoldsBytesTest,
                         testing::Values(0, 1, kBlock - 1, kBlock, kBlock + 1, 2 * kBlock - 1, 2 * kBlock,
                                         5 * kBlock + 7));

}  // namespace
}  // namespace ZET::Deploy
