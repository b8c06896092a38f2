#include "deploy/state/OwnText.h"

#include <fcntl.h>
#include <unistd.h>

#include "../HostFixture.h"
#include "deploy/host/Failure.h"
#include "deploy/host/FileMode.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {
namespace {

class OwnTextTest : public HostFixture {
  protected:
    OwnTextTest() { Write("file", "old\n", 0640); }
    ~OwnTextTest() override { SetRenameGuard({}); }
};

TEST_F(OwnTextTest, TextTakesThePlaceOfTheFormerOneWithItsMode) {
    SaveOwnText(At("file"), "new\n", 0604);
    EXPECT_EQ(Read("file"), "new\n");
    EXPECT_EQ(ModeOf(At("file")), mode_t{0604});
    EXPECT_FALSE(std::filesystem::exists(At("file.tmp")));
}

TEST_F(OwnTextTest, RenameIsSeenByTheGuardWhichMayRefuseIt) {
    SetRenameGuard([&](const ZETRename& rename) {
        EXPECT_EQ(rename.from, At("file.tmp"));
        EXPECT_EQ(rename.to, At("file"));
        throw Failure({.text = "refused"});
    });
    EXPECT_THROW(SaveOwnText(At("file"), "new\n", 0640), Failure);
    EXPECT_EQ(Read("file"), "old\n");
}

TEST_F(OwnTextTest, OpenLeftOverIsNotWrittenInto) {
    Write("file.tmp", "left over", 0666);
    const int reader = open(At("file.tmp").c_str(), O_RDONLY | O_CLOEXEC);
    SaveOwnText(At("file"), "new\n", 0600);
    char bytes[16] = {};
    EXPECT_EQ(std::string(bytes, static_cast<std::size_t>(read(reader, bytes, sizeof bytes))), "left over");
    close(reader);
    EXPECT_EQ(Read("file"), "new\n");
}

TEST_F(OwnTextTest, LinkInTheWayIsNotFollowed) {
    Write("other", "other\n");
    std::filesystem::create_symlink(At("other"), At("file.tmp"));
    EXPECT_THROW(SaveOwnText(At("file"), "new\n", 0640), Failure);
    EXPECT_EQ(Read("other"), "other\n");
    EXPECT_EQ(Read("file"), "old\n");
}

}  // namespace
}  // namespace ZET::Deploy
