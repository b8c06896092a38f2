#include "deploy/state/StateFile.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "../HostFixture.h"
#include "deploy/host/Failure.h"

namespace ZET::Deploy {
namespace {

namespace fs = std::filesystem;

using testing::HasSubstr;

class StateFileTest : public HostFixture {
  protected:
    void ExpectDamage(const std::string& text) {
        EXPECT_THAT(MessageOf<Damage>([&] { RequireSoundStateFile(m_file); }),
                    AllOf(HasSubstr(m_file), HasSubstr(text), HasSubstr("(move it away)")));
    }

    const std::string m_file = At("state/f");
};

TEST_F(StateFileTest, FileIsThereOrNot) {
    EXPECT_NO_THROW(RequireSoundStateFile(m_file));
    Write("state/f", "");
    EXPECT_NO_THROW(RequireSoundStateFile(m_file));
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
    EXPECT_NO_THROW(RequireSoundStateFile(m_file));
    fs::resize_file(m_file, (std::uintmax_t{64} << 20) + 1);
    ExpectDamage("is larger than any that is written here");
}

TEST_F(StateFileTest, TextIsPutBackWhereSavingFails) {
    Write("state/f", "former\n");
    EXPECT_THROW(SaveStateFile(m_file,
                               [&] {
                                   Write("state/f", "par");
                                   throw std::runtime_error("no room");
                               }),
                 std::runtime_error);
    EXPECT_EQ(Read("state/f"), "former\n");
}

TEST_F(StateFileTest, NothingStaysOfANewFileWhereSavingFails) {
    EXPECT_THROW(SaveStateFile(m_file,
                               [&] {
                                   Write("state/f", "par");
                                   throw std::runtime_error("no room");
                               }),
                 std::runtime_error);
    EXPECT_FALSE(fs::exists(m_file));
}

}  // namespace
}  // namespace ZET::Deploy
