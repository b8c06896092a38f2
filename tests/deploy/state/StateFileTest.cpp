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

}  // namespace
}  // namespace ZET::Deploy
