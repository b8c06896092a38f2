#include "AttributesFixture.h"

namespace ZET::Test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class OwnersRights : public Attributes {};

TEST_F(OwnersRights, AclLetsNobodyInWhileItIsTakenOver) {
    Set(m_target, kAcl, Acl(kSomeUser, 6, 7));
    WriteText(m_temporary, "new", 0600);
    SystemCalls calls;
    calls.Fail("fchmod", EIO);
    MessageOf<EZETError>([&] { Rename(); });
    EXPECT_EQ(RightsIn(Get(m_temporary, kAcl), 0x10), 0);
    EXPECT_EQ(ModeOf(m_temporary), 0600U);
}

TEST_F(OwnersRights, FileIsClosedToOthersMeanwhile) {
    Own(m_target);
    SystemCalls calls;
    Rename();
    EXPECT_THAT(calls.Calls({"fchmod"}), ElementsAre("fchmod target.tmp 0600", "fchmod target.tmp 0640"));
}

TEST_F(OwnersRights, LinkPutInPlaceOfTheNewTextAtTheLastMomentIsNotTouchedThrough) {
    Own(m_target);
    WriteText(m_directory / "precious", "precious", 0600);
    SystemCalls calls;
    calls.Before("listxattr", [&] {
        ::unlink(m_temporary.c_str());
        ASSERT_EQ(::symlink("precious", m_temporary.c_str()), 0);
    });
    EXPECT_THAT(MessageOf<EZETError>([&] { Rename(); }), HasSubstr("was replaced at the same time"));
    EXPECT_EQ(StatusOf(m_directory / "precious").st_uid, 0U);
    EXPECT_EQ(ModeOf(m_directory / "precious"), 0600U);
    EXPECT_EQ(ReadText(m_target), "old");
}

TEST_F(OwnersRights, OwnerComesBeforeTheBitsThatGiveHisRights) {
    Own(m_target);
    WriteText(m_temporary, "new", 06755);
    SystemCalls calls;
    Rename();
    EXPECT_THAT(calls.Calls({"fchmod", "fchown"}),
                ElementsAre("fchmod target.tmp 0600", "fchown target.tmp", "fchmod target.tmp 6755"));
}

TEST_F(OwnersRights, RightsOfAnOwnerWhoCouldNotBeGivenAreLeftOut) {
    Own(m_target);
    for (const int failures : {1, 2}) {
        WriteText(m_temporary, "new", 06755);
        Own(m_target);
        SystemCalls calls;
        calls.Fail("fchown", EPERM, 1, failures == 1);
        LogOfRename();
        EXPECT_EQ(ModeOf(m_target), 0755U) << failures;
    }
}

TEST_F(OwnersRights, RightsAreNotTakenFromAFileThatSomebodyElseMayHaveChosen) {
    WriteText(m_directory / "real", "real");
    const std::map<bool, std::function<int()>> ways = {
        {false, [&] { return ::symlink("real", m_target.c_str()); }},
        {true, [&] { return ::link((m_directory / "real").c_str(), m_target.c_str()); }},
    };
    for (const auto& [givesOwner, lead] : ways) {
        for (const mode_t mode : {04755U, 02755U}) {
            for (const bool isOthers : {false, true}) {
                ASSERT_EQ(::unlink(m_target.c_str()), 0);
                ASSERT_EQ(lead(), 0);
                WriteText(m_temporary, "new", mode);
                if (isOthers) Own(m_directory / "real");
                EXPECT_THAT(LogOfRename(),
                            HasSubstr("Set-user-ID and set-group-ID are left out: '" + m_target + "'"));
                EXPECT_EQ(ModeOf(m_target), 0755U);
                EXPECT_EQ(StatusOf(m_target).st_uid, givesOwner ? StatusOf(m_directory / "real").st_uid : 0U);
            }
        }
    }
}

TEST_F(OwnersRights, TheyAreThoseOfTheFileThatWasOpened) {
    Own(m_target);
    SystemCalls calls;
    calls.Before("listxattr", [&] {
        WriteText(m_directory / "other", "other");
        Set(m_directory / "other", "user.other", "1");
        ASSERT_EQ(::rename((m_directory / "other").c_str(), m_target.c_str()), 0);
    });
    Rename();
    EXPECT_EQ(StatusOf(m_target).st_uid, kSomeUser);
    EXPECT_EQ(Get(m_target, "user.other"), "-");
}

TEST_F(OwnersRights, CopyOfWhatALinkLeadsToGivesNobodysRights) {
    WriteText(m_target, "old", 06755);
    ASSERT_EQ(::symlink("target", (m_directory / "link").c_str()), 0);
    EXPECT_THAT(LoggedBy([&] { CopyFile(m_directory / "link", m_reserve); }), HasSubstr("are left out"));
    EXPECT_EQ(ModeOf(m_reserve), 0755U);
}

TEST_F(OwnersRights, CopyOfAFileWithASecondNameKeepsItsMode) {
    WriteText(m_target, "old", 06755);
    ASSERT_EQ(::link(m_target.c_str(), (m_directory / "second").c_str()), 0);
    EXPECT_EQ(LoggedBy([&] { CopyFile(m_target, m_reserve); }), "");
    EXPECT_EQ(ModeOf(m_reserve), 06755U);
}

TEST_F(OwnersRights, CopyNeverGivesTheRightsOfAnotherOwner) {
    WriteText(m_target, "old", 06755);
    Own(m_target);
    ASSERT_EQ(::chmod(m_target.c_str(), 06755), 0);
    {
        SystemCalls calls;
        calls.BeforeEach([&] {
            for (const std::string& name : m_directory.Names()) {
                const struct stat status = StatusOf(m_directory / name);
                EXPECT_TRUE((status.st_mode & 06000) == 0 || status.st_uid == kSomeUser) << name;
            }
        });
        CopyFile(m_target, m_reserve);
        EXPECT_GT(calls.Count("fchmod"), 0);
    }
    EXPECT_EQ(ModeOf(m_reserve), 06755U);
    SystemCalls calls;
    calls.Fail("fchown", EPERM);
    LoggedBy([&] { CopyFile(m_target, m_reserve); });
    EXPECT_EQ(ModeOf(m_reserve), 0755U);
}

}  // namespace
}  // namespace ZET::Test
