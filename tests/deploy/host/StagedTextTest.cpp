#include "deploy/host/StagedText.h"

#include <fcntl.h>

#include <filesystem>
#include <string>

#include "../HostFixture.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileState.h"
#include "deploy/host/StagedOwner.h"
#include "posix/Descriptor.h"

namespace ZET::Deploy {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMegabyte = std::size_t{1} << 20;

class StagedTextTest : public HostFixture {
  protected:
    /// By its path, and as a file that is open and was read to its end.
    bool IsIn(const StagedText& text, const std::string& name) const {
        const Descriptor file(open(At(name).c_str(), O_RDONLY | O_CLOEXEC));
        lseek(file, 0, SEEK_END);
        const bool isInOpened = text.IsIn(file, At(name));
        EXPECT_EQ(text.IsIn(At(name)), isInOpened) << name;
        return isInOpened;
    }

    bool IsStaged(const std::string& name) const { return fs::exists(m_staging.PathOf(name)); }

    const Staging m_staging;
};

TEST_F(StagedTextTest, BecomesAFileWhenSomebodyAsksForOne) {
    const StagedText text(m_staging, "a", "text\n", 0640);
    EXPECT_FALSE(IsStaged("a"));
    EXPECT_EQ(ReadFileBytes(text.File()), "text\n");
    EXPECT_EQ(StateOf(text.File()).mode, S_IFREG | 0640U);
    EXPECT_TRUE(IsStaged("a"));
    EXPECT_EQ(text.Text(), "text\n");
}

TEST_F(StagedTextTest, LargeOneIsAFileFromTheStart) {
    const std::string large(kMegabyte + 1, 'x');
    const StagedText text(m_staging, "a", large, 0600);
    EXPECT_TRUE(IsStaged("a"));
    EXPECT_EQ(text.Text(), large);
}

TEST_F(StagedTextTest, ManyAreNotAllInMemory) {
    int kept = 0;
    while (m_staging.TakeIntoMemory(kMegabyte))
        ++kept;
    EXPECT_EQ(kept, 64);
    const StagedText text(m_staging, "a", "text\n", 0600);
    EXPECT_TRUE(IsStaged("a"));
    EXPECT_EQ(text.Text(), "text\n");
}

TEST_F(StagedTextTest, IsComparedByteForByte) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{5}, 3 * kMegabyte / 4, kMegabyte + 7}) {
        const std::string bytes(size, 'x');
        const StagedText text(m_staging, "a" + std::to_string(size), bytes, 0600);
        Write("same", bytes);
        Write("longer", bytes + "y");
        Write("other", size == 0 ? "z" : bytes.substr(1) + "z");
        EXPECT_TRUE(IsIn(text, "same")) << size;
        EXPECT_FALSE(IsIn(text, "longer")) << size;
        EXPECT_FALSE(IsIn(text, "other")) << size;
        if (size == 0) continue;
        Write("shorter", bytes.substr(1));
        EXPECT_FALSE(IsIn(text, "shorter")) << size;
    }
}

TEST_F(StagedTextTest, StateInPlaceIsThatOfAFileInItsPlace) {
    Write("out/a", "former");
    const StagedText text(m_staging, "a", "text\n", 0640);
    const FileState state = GiveOwnerInPlace(At("out/a"), text, StateOf(At("out/a")));
    EXPECT_EQ(state.mode, S_IFREG | 0640U);
    EXPECT_EQ(state.owner, geteuid());
    EXPECT_EQ(state.group, getegid());
    EXPECT_FALSE(IsStaged("a")) << "nobody needs a file to find that out";
}

TEST_F(StagedTextTest, OwnerInPlaceIsTheFormersWhereHeCanBeGivenTheFile) {
    if (geteuid() != 0) GTEST_SKIP() << "needs root";
    constexpr uid_t kOther = 4711;
    Write("out/a", "former");
    ASSERT_EQ(chown(At("out/a").c_str(), kOther, kOther), 0);
    const StagedText text(m_staging, "a", "text\n", 0640);
    const FileState state = GiveOwnerInPlace(At("out/a"), text, StateOf(At("out/a")));
    EXPECT_EQ(state.owner, kOther);
    EXPECT_EQ(state.group, kOther);
}

}  // namespace

}  // namespace ZET::Deploy
