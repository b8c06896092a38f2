#include "AttributesFixture.h"

namespace ZET::Test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST_F(Attributes, OwnerAndGroupAreThoseOfTheReplacedFile) {
    Own(m_target);
    Rename();
    EXPECT_EQ(StatusOf(m_target).st_uid, kSomeUser);
    EXPECT_EQ(StatusOf(m_target).st_gid, kSomeGroup);
    EXPECT_EQ(ReadText(m_target), "new");
}

TEST_F(Attributes, ModeIsThatOfTheNewText) {
    Own(m_target);
    Set(m_target, "user.a", "1");
    for (const mode_t mode : {0640U, 0400U, 06755U, 04755U, 02755U, 01755U, 0U}) {
        WriteText(m_temporary, "new", mode);
        Rename();
        EXPECT_EQ(ModeOf(m_target), mode);
        EXPECT_EQ(Get(m_target, "user.a"), "1");
    }
}

TEST_F(Attributes, UserAttributesAndLabelAreTakenOver) {
    Set(m_target, "user.one", std::string("a\0b", 3));
    Set(m_target, "user.two", "");
    Set(m_target, kLabel, "system_u:object_r:etc_t:s0");
    Rename();
    EXPECT_EQ(Get(m_target, "user.one"), std::string("a\0b", 3));
    EXPECT_EQ(Get(m_target, "user.two"), "");
    EXPECT_EQ(Get(m_target, kLabel), "system_u:object_r:etc_t:s0");
}

TEST_F(Attributes, ManyAndLongAttributesAreTakenOver) {
    Set(m_target, "user.long", std::string(2000, 'x'));
    for (int i = 0; i < 40; i++)
        Set(m_target, ("user." + std::string(30, 'n') + std::to_string(i)).c_str(), "v");
    Rename();
    EXPECT_EQ(Get(m_target, "user.long"), std::string(2000, 'x'));
    for (int i = 0; i < 40; i++)
        EXPECT_EQ(Get(m_target, ("user." + std::string(30, 'n') + std::to_string(i)).c_str()), "v");
}

TEST_F(Attributes, WhatTheReplacedFileHasNotIsTakenAwayButTheLabel) {
    Set(m_temporary, "user.left-over", "1");
    Set(m_temporary, kAcl, Acl(kSomeUser, 6, 6));
    Set(m_temporary, kLabel, "system_u:object_r:tmp_t:s0");
    Rename();
    EXPECT_EQ(Get(m_target, "user.left-over"), "-");
    EXPECT_EQ(Get(m_target, kAcl), "-");
    EXPECT_EQ(Get(m_target, kLabel), "system_u:object_r:tmp_t:s0");
}

TEST_F(Attributes, IntegrityAttributesAreNotTakenOver) {
    Set(m_target, "user.a", "1");
    const std::string capability("\x01\0\0\x02\0\x04\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 20);
    Set(m_target, "security.capability", capability);
    Set(m_target, "trusted.overlay", "x");
    Set(m_target, "security.other", "x");
    Rename();
    EXPECT_EQ(Get(m_target, "user.a"), "1");
    EXPECT_EQ(Get(m_target, "security.capability"), "-");
    EXPECT_EQ(Get(m_target, "trusted.overlay"), "-");
    EXPECT_EQ(Get(m_target, "security.other"), "-");
}

TEST_F(Attributes, AclIsTakenOverAndTheModeWins) {
    Set(m_target, kAcl, Acl(kSomeUser, 6, 7));
    Rename();
    const std::string acl = Get(m_target, kAcl);
    EXPECT_EQ(RightsIn(acl, 0x02), 6) << "the named user";
    EXPECT_EQ(RightsIn(acl, 0x10), 4) << "the mask";
    EXPECT_EQ(ModeOf(m_target), 0640U);
}

TEST_F(Attributes, AclOfTheDirectoryIsNotMixedIn) {
    Set(m_directory.Path(), "system.posix_acl_default", Acl(kSomeUser, 6, 7));
    ASSERT_EQ(::unlink(m_temporary.c_str()), 0);
    WriteText(m_temporary, "new", 0640);
    ASSERT_NE(Get(m_temporary, kAcl), "-");
    Rename();
    EXPECT_EQ(Get(m_target, kAcl), "-");
    EXPECT_EQ(ModeOf(m_target), 0640U);
}

TEST_F(Attributes, FileJustMovedAwayIsAskedThroughItsReserve) {
    Own(m_target);
    Set(m_target, "user.a", "1");
    RenameFile(m_target, m_reserve);
    Rename();
    EXPECT_EQ(StatusOf(m_target).st_uid, kSomeUser);
    EXPECT_EQ(Get(m_target, "user.a"), "1");
    EXPECT_EQ(ModeOf(m_target), 0640U);
}

TEST_F(Attributes, PresentFileIsAskedBeforeItsReserve) {
    WriteText(m_reserve, "older");
    Own(m_reserve);
    Rename();
    EXPECT_EQ(StatusOf(m_target).st_uid, 0U);
}

TEST_F(Attributes, NewFileKeepsWhatItHas) {
    ASSERT_EQ(::unlink(m_target.c_str()), 0);
    Own(m_temporary);
    Set(m_temporary, "user.a", "1");
    Rename();
    EXPECT_EQ(StatusOf(m_target).st_uid, kSomeUser);
    EXPECT_EQ(Get(m_target, "user.a"), "1");
}

TEST_F(Attributes, OtherRenamesTakeNothingOver) {
    Own(m_target);
    WriteText(m_reserve, "reserve", 0600);
    Set(m_reserve, "user.a", "1");
    RenameFile(m_reserve, m_target);
    EXPECT_EQ(StatusOf(m_target).st_uid, 0U);
    EXPECT_EQ(Get(m_target, "user.a"), "1");
    EXPECT_EQ(ModeOf(m_target), 0600U);
}

TEST_F(Attributes, LinkInPlaceOfTheTargetGivesNothingOfWhatItLeadsTo) {
    RenameFile(m_target, m_directory / "real");
    Own(m_directory / "real");
    for (const std::string& link : {m_target, m_target + ".before_zet"}) {
        WriteText(m_temporary, "new");
        ASSERT_EQ(::symlink("real", link.c_str()), 0);
        Rename();
        EXPECT_EQ(StatusOf(m_target).st_uid, 0U) << link;
        EXPECT_EQ(ReadText(m_directory / "real"), "old");
        ASSERT_EQ(::unlink(m_target.c_str()), 0);
    }
}

TEST_F(Attributes, DanglingLinkInPlaceOfTheTargetIsReplaced) {
    ASSERT_EQ(::unlink(m_target.c_str()), 0);
    ASSERT_EQ(::symlink("nowhere", m_target.c_str()), 0);
    Rename();
    EXPECT_EQ(ReadText(m_target), "new");
}

TEST_F(Attributes, LikeFilesCauseNoChange) {
    Set(m_target, "user.a", "1");
    Set(m_temporary, "user.a", "1");
    SystemCalls calls;
    Rename();
    EXPECT_THAT(calls.Calls({"fchmod", "fchown", "fsetxattr", "fremovexattr"}), ElementsAre());
}

TEST_F(Attributes, AreDurableBeforeTheRename) {
    Own(m_target);
    SystemCalls calls;
    Rename();
    EXPECT_THAT(calls.Calls({"fchmod", "fchown", "rename", "fsync"}),
                testing::Contains("fsync target.tmp").Times(1));
    const auto order = calls.Calls({"fchown", "fsync", "rename"});
    ASSERT_GE(order.size(), 3U);
    EXPECT_EQ(order[0], "fchown target.tmp");
    EXPECT_EQ(order[1], "fsync target.tmp");
    EXPECT_EQ(order[2], "rename target.tmp target");
}

TEST_F(Attributes, PipeInPlaceOfTheTargetIsReplacedAtOnce) {
    ASSERT_EQ(::unlink(m_target.c_str()), 0);
    ASSERT_EQ(::mkfifo(m_target.c_str(), 0600), 0);
    Rename();
    EXPECT_EQ(ReadText(m_target), "new");
}

TEST_F(Attributes, CopyHasThemToo) {
    Own(m_target);
    Set(m_target, "user.a", "1");
    Set(m_target, kLabel, "system_u:object_r:etc_t:s0");
    Set(m_target, kAcl, Acl(kSomeUser, 6, 6));
    const mode_t mode = ModeOf(m_target);
    CopyFile(m_target, m_reserve);
    EXPECT_EQ(StatusOf(m_reserve).st_uid, kSomeUser);
    EXPECT_EQ(StatusOf(m_reserve).st_gid, kSomeGroup);
    EXPECT_EQ(Get(m_reserve, "user.a"), "1");
    EXPECT_EQ(Get(m_reserve, kLabel), "system_u:object_r:etc_t:s0");
    EXPECT_EQ(Get(m_reserve, kAcl), Get(m_target, kAcl));
    EXPECT_EQ(ModeOf(m_reserve), mode);
}

}  // namespace
}  // namespace ZET::Test
