#include "deploy/state/StateFile.h"

#include <gmock/gmock.h>

#include "../HostFixture.h"
#include "deploy/host/Failure.h"

namespace ZET::Deploy {
namespace {

namespace fs = std::filesystem;

using testing::HasSubstr;

class StateFileTest : public HostFixture {
  protected:
    void ExpectDamage(const std::string& text) {
        EXPECT_THAT(MessageOf<Damage>([&] { HasStateFile(m_file); }),
                    AllOf(HasSubstr(m_file), HasSubstr(text), HasSubstr("(move it away)")));
    }

    const std::string m_file = At("state/f");
};

TEST_F(StateFileTest, FileIsThereOrNot) {
    EXPECT_FALSE(HasStateFile(m_file));
    Write("state/f", "");
    EXPECT_TRUE(HasStateFile(m_file));
}

TEST_F(StateFileTest, LinkThatLeadsElsewhereIsDamage) {
    Write("out/f", "x");
    fs::create_symlink(At("out/f"), m_file);
    ExpectDamage("is no regular file");
}

TEST_F(StateFileTest, DirectoryIsDamage) {
    fs::create_directory(m_file);
    ExpectDamage("is no regular file");
}

TEST_F(StateFileTest, FileThatNobodyHereWroteSoLargeIsDamage) {
    Write("state/f", "");
    fs::resize_file(m_file, std::uintmax_t{64} << 20);
    EXPECT_TRUE(HasStateFile(m_file));
    fs::resize_file(m_file, (std::uintmax_t{64} << 20) + 1);
    ExpectDamage("is larger than any that is written here");
}

TEST_F(StateFileTest, FileIsReplacedWhole) {
    ReplaceStateFile(m_file, "one\n");
    EXPECT_EQ(Read("state/f"), "one\n");
    ReplaceStateFile(m_file, "two\n");
    EXPECT_EQ(Read("state/f"), "two\n");
    EXPECT_EQ(fs::status(m_file).permissions(), fs::perms(0644));
    EXPECT_FALSE(fs::exists(At("state/f.tmp")));
}

TEST_F(StateFileTest, EmptyTextRemovesTheFileAndWhatAKilledRunLeft) {
    Write("state/f", "one\n");
    Write("state/f.tmp", "half");
    ReplaceStateFile(m_file, "");
    EXPECT_TRUE(fs::is_empty(At("state")));
    EXPECT_NO_THROW(ReplaceStateFile(m_file, "")) << "there is none any more";
}

TEST_F(StateFileTest, FileThatCannotBeReplacedStays) {
    fs::create_directory(m_file);
    EXPECT_ANY_THROW(ReplaceStateFile(m_file, "text\n"));
    EXPECT_TRUE(fs::is_directory(m_file));
    EXPECT_FALSE(fs::exists(At("state/f.tmp")));
}

TEST_F(StateFileTest, NothingIsWrittenThroughALinkInTheWayOfTheTemporaryFile) {
    Write("out/victim", "kept");
    fs::create_symlink(At("out/victim"), At("state/f.tmp"));
    EXPECT_THROW(ReplaceStateFile(m_file, "text\n"), Failure);
    EXPECT_EQ(Read("out/victim"), "kept");
    EXPECT_THROW(ReplaceStateFile(m_file, ""), Failure) << "nor is it taken away";
    EXPECT_TRUE(fs::is_symlink(At("state/f.tmp")));
}

}  // namespace
}  // namespace ZET::Deploy
