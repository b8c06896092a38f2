#include <sys/resource.h>

#include <fstream>
#include <new>

#include "ChildProcess.h"
#include "ModuleTest.h"

namespace ZET {
namespace {

using namespace std::chrono_literals;

/// Bytes of address space that the process has.
std::size_t AddressSpace() {
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<std::size_t>(::getpagesize());
}

void LimitAddressSpace(rlim_t limit) {
    struct rlimit limits = {};
    ASSERT_EQ(::getrlimit(RLIMIT_AS, &limits), 0);
    limits.rlim_cur = limit;
    ASSERT_EQ(::setrlimit(RLIMIT_AS, &limits), 0);
}

/// A pass that runs out of memory, whenever it does, is as if it had not been called.
class OutOfMemoryTest : public ModuleTest {
  protected:
    void ExpectTextSurvives(const std::string& text, const std::function<void(IZETConfigFile&)>& pass) {
#if defined(__SANITIZE_ADDRESS__)
        GTEST_SKIP() << "the sanitizer has an address space of its own";
#endif
        Write("target", text);
        ExpectChildPasses(30s, [&] {
            CZETConfigFile file(m_core);
            ASSERT_TRUE(file.Open(Path("target"), "", true));
            LimitAddressSpace(AddressSpace() + kLittle);
            EXPECT_THROW(pass(file), std::bad_alloc);
            LimitAddressSpace(RLIM_INFINITY);
            file.Save(true);
        });
        EXPECT_TRUE(Read("target") == text);
    }

    /// So many short pieces of it are left that the new text needs memory of its own.
    static std::string ManyOf(const std::string& lines) {
        std::string text;
        while (text.size() < kMuch)
            text += lines;
        return text;
    }

    static constexpr std::size_t kLittle = std::size_t{4} << 20;
    static constexpr std::size_t kMuch = std::size_t{14} << 20;
};

TEST_F(OutOfMemoryTest, TextOutlivesAMarkerThatCannotBeTakenOut) {
    const std::string text = ManyOf("a line that is longer than its block\n" + kBegin + kEnd);
    ExpectTextSurvives(
        text, [](IZETConfigFile& file) { file.RemoveMarkers(kBegin.substr(0, 9), kEnd.substr(0, 9)); });
}

TEST_F(OutOfMemoryTest, TextOutlivesALineThatCannotBeAdded) {
    const std::string text = ManyOf(std::string(1023, 'x') + "\n");
    m_core.SetMatcher([](const std::string&, const std::string&) { return false; });
    ExpectTextSurvives(text, [](IZETConfigFile& file) { file.SetLine("^y", std::string(kMuch, 'y')); });
}

TEST_F(OutOfMemoryTest, TextOutlivesAPlaceholderThatCannotBeReplaced) {
    const std::string text = ManyOf("a placeholder ${a}\n");
    ExpectTextSurvives(text, [](IZETConfigFile& file) {
        StringMap values = {{"${a}", "1"}};
        file.ApplyTemplates(values);
    });
}

}  // namespace
}  // namespace ZET
