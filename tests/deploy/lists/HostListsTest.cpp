#include "deploy/lists/HostLists.h"

#include <gmock/gmock.h>

#include "../HostFixture.h"
#include "deploy/host/Failure.h"

namespace ZET::Deploy {
namespace {

namespace fs = std::filesystem;

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class HostListsTest : public HostFixture {
  protected:
    HostLists& Lists() {
        if (!m_lists) m_lists.emplace(TheHost());
        return *m_lists;
    }

  private:
    std::optional<HostLists> m_lists;
};

TEST_F(HostListsTest, MissingListIsEmpty) {
    EXPECT_EQ(Lists().Targets().file, At("templates/targets.toml"));
    EXPECT_THAT(Lists().Targets().targets, IsEmpty());
    EXPECT_THAT(Lists().Targets().problems, IsEmpty());
    EXPECT_EQ(Lists().TargetNamed(At("out/a")), nullptr);
}

TEST_F(HostListsTest, ListIsReadOnceInARun) {
    AddTarget("a");
    EXPECT_THAT(Lists().Targets().targets, SizeIs(1));
    AddTarget("b");
    EXPECT_THAT(Lists().Targets().targets, SizeIs(1));
}

TEST_F(HostListsTest, ProblemsOfTheListAreNotItsEnd) {
    AddTarget("a", "secret = 1");
    EXPECT_THAT(Lists().Targets().problems, SizeIs(1));
    ASSERT_NE(Lists().TargetNamed(At("out/a")), nullptr);
    EXPECT_EQ(Lists().TargetNamed(At("out/a"))->templateName, "a");
}

TEST_F(HostListsTest, ListThatIsNoneIsAFailureWithItsPlace) {
    Write("templates/targets.toml", "\n[templates\n");
    EXPECT_THAT(MessageOf<Failure>([&] { Lists().TargetNamed(At("out/a")); }),
                HasSubstr(At("templates/targets.toml") + ":2:"));
}

TEST_F(HostListsTest, WhateverWayLeadsToATargetItIsTheSame) {
    AddTarget("a");
    Write("out/real", "text");
    fs::create_symlink(At("out/real"), At("out/a"));
    fs::create_symlink(At("out"), At("way"));
    ASSERT_NE(Lists().TargetNamed(At("out/real")), nullptr);
    EXPECT_NE(Lists().TargetOf(At("way/a")), nullptr);
    EXPECT_EQ(Lists().TargetNamed(At("out/b")), nullptr);
}

TEST_F(HostListsTest, TargetToWhichNoWayLeadsIsNoFile) {
    AddTarget("a");
    AddTarget("b");
    fs::create_symlink("a", At("out/a"));
    EXPECT_EQ(Lists().TargetNamed(At("out/a")), nullptr);
    EXPECT_NE(Lists().TargetNamed(At("out/b")), nullptr);
}

TEST_F(HostListsTest, CommitsOfBothRolesCount) {
    Commit("out/a", Role::Server);
    Commit("out/b", Role::Client);
    Write("out/c", "text");
    EXPECT_TRUE(Lists().IsCommitted(At("out/a")));
    EXPECT_TRUE(Lists().IsCommitted(At("out/b")));
    EXPECT_FALSE(Lists().IsCommitted(At("out/c")));
}

TEST_F(HostListsTest, CommittedFileIsOneWhateverTheListSays) {
    AddTarget("a");
    AddTarget("only-listed");
    Commit("out/a", Role::Client);
    Commit("out/left", Role::Client);
    EXPECT_TRUE(Lists().CommittedFile(At("out/a")));
    EXPECT_TRUE(Lists().CommittedFile(At("out/left")));
    EXPECT_FALSE(Lists().CommittedFile(At("out/only-listed")));
}

TEST_F(HostListsTest, CommittedFileIsOneWithoutItsReserve) {
    Commit("out/a", Role::Client);
    fs::remove(At("out/a.before_zet"));
    EXPECT_TRUE(Lists().CommittedFile(At("out/a")));
}

TEST_F(HostListsTest, DamagedRecordIsAFailure) {
    Write("state/state.db", "nonsense\n");
    Write("out/a.before_zet", "text");
    EXPECT_THROW(Lists().IsCommitted(At("out/a")), Damage);
    EXPECT_FALSE(Lists().IsCommitted(At("out/without-reserve")));
}

TEST_F(HostListsTest, LinkOfATreeLeadsToAFileOfTheTree) {
    Write("zet.conf", "ZET_CFG_DIR=/etc\nZET_VAR_LIB_DIR=/state\nZET_CFG_TEMPL_DIR=/templates\n");
    m_options.root = At(".");
    Host host("/zet.conf", m_options, m_told);
    fs::create_symlink("/out", At("link"));
    EXPECT_EQ(HostLists(host).NameOf(At("out/a")), At("out/a"));
    EXPECT_EQ(HostLists(host).NameOf(At("link/a")), At("out/a"));
}

}  // namespace
}  // namespace ZET::Deploy
