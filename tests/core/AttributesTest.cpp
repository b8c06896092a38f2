#include <sys/xattr.h>
#include <unistd.h>

#include "Support.h"
#include "SystemCalls.h"
#include "zet/ZETFiles.h"

namespace ZET::Test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr char kAcl[] = "system.posix_acl_access";
constexpr char kLabel[] = "security.selinux";

/// An ACL in the form that the system stores: owner, one named user, group, mask, others.
std::string Acl(unsigned user, unsigned userRights, unsigned mask) {
    std::string bytes("\x02\0\0\0", 4);
    const auto add = [&](unsigned tag, unsigned rights, unsigned id) {
        bytes += {static_cast<char>(tag), '\0', static_cast<char>(rights), '\0'};
        for (int shift = 0; shift < 32; shift += 8)
            bytes += static_cast<char>((id >> shift) & 0xFF);
    };
    add(0x01, 6, 0xFFFFFFFF);
    add(0x02, userRights, user);
    add(0x04, 4, 0xFFFFFFFF);
    add(0x10, mask, 0xFFFFFFFF);
    add(0x20, 0, 0xFFFFFFFF);
    return bytes;
}

void Set(const std::string& path, const char* name, const std::string& value) {
    if (::setxattr(path.c_str(), name, value.data(), value.size(), 0) != 0)
        FAIL() << path << " " << name << ": error " << errno;
}

/// "-" when there is none.
std::string Get(const std::string& path, const char* name) {
    char value[8192];
    const ssize_t size = ::getxattr(path.c_str(), name, value, sizeof value);
    return size < 0 ? "-" : std::string(value, static_cast<std::size_t>(size));
}

/// The rights of one kind of entry of a stored ACL.
int RightsIn(const std::string& acl, unsigned tag) {
    for (std::size_t at = 4; at + 8 <= acl.size(); at += 8)
        if (static_cast<unsigned char>(acl[at]) == tag) return acl[at + 2];
    return -1;
}

/// A file is about to be replaced by its new text, which stands in its temporary companion.
class Attributes : public testing::Test {
  protected:
    void SetUp() override {
        if (!IsRoot()) GTEST_SKIP() << "gives files to other users";
        WriteText(m_target, "old", 0644);
        WriteText(m_temporary, "new", 0640);
    }

    void Rename() { RenameFile(m_temporary, m_target); }

    /// Renames; what it logs.
    std::string LogOfRename() {
        return LoggedBy([&] { Rename(); });
    }

    std::string Kept(const std::string& what) {
        return "zet: warning: Failed to keep " + what + " of file '" + m_temporary + "': ";
    }

    void Own(const std::string& path) { ASSERT_EQ(::chown(path.c_str(), kSomeUser, kSomeGroup), 0); }

    TemporaryDirectory m_directory;
    const std::string m_target = m_directory / "target";
    const std::string m_temporary = m_target + ".tmp";
    const std::string m_reserve = m_target + ".before_zet";
};

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

TEST_F(Attributes, AclLetsNobodyInWhileItIsTakenOver) {
    Set(m_target, kAcl, Acl(kSomeUser, 6, 7));
    WriteText(m_temporary, "new", 0600);
    SystemCalls calls;
    calls.Fail("fchmod", EIO);
    MessageOf<EZETError>([&] { Rename(); });
    EXPECT_EQ(RightsIn(Get(m_temporary, kAcl), 0x10), 0);
    EXPECT_EQ(ModeOf(m_temporary), 0600U);
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

TEST_F(Attributes, LinkInPlaceOfTheTargetIsFollowedToTheFileThatReadersSaw) {
    RenameFile(m_target, m_directory / "real");
    Own(m_directory / "real");
    ASSERT_EQ(::symlink("real", m_target.c_str()), 0);
    Rename();
    EXPECT_EQ(StatusOf(m_target).st_uid, kSomeUser);
    EXPECT_EQ(ReadText(m_directory / "real"), "old");
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

TEST_F(Attributes, FileIsClosedToOthersMeanwhile) {
    Own(m_target);
    SystemCalls calls;
    Rename();
    EXPECT_THAT(calls.Calls({"fchmod"}), ElementsAre("fchmod target.tmp 0600", "fchmod target.tmp 0640"));
}

TEST_F(Attributes, WhatMayNotBeDoneIsAWarning) {
    Own(m_target);
    Set(m_target, "user.a", "1");
    Set(m_temporary, "user.b", "1");
    for (const int error : {EPERM, EACCES, ENOTSUP, ENOSYS}) {
        SystemCalls calls;
        calls.Fail("fchown", error);
        calls.Fail("fsetxattr", error);
        calls.Fail("fremovexattr", error);
        std::string log = LogOfRename();
        EXPECT_THAT(log, HasSubstr(Kept("the owner")));
        EXPECT_THAT(log, HasSubstr(Kept("the group")));
        EXPECT_THAT(log, HasSubstr(Kept("attribute 'user.a'")));
        EXPECT_THAT(log, HasSubstr(Kept("attribute 'user.b'")));
        EXPECT_EQ(ReadText(m_target), "new");
        EXPECT_EQ(ModeOf(m_target), 0640U);
        WriteText(m_temporary, "new", 0640);
        Own(m_target);
        Set(m_target, "user.a", "1");
        ASSERT_EQ(::removexattr(m_target.c_str(), "user.b"), 0);
        Set(m_temporary, "user.b", "1");
    }
}

TEST_F(Attributes, OwnerWhomTheNamespaceDoesNotKnowIsAWarning) {
    Own(m_target);
    SystemCalls calls;
    calls.Fail("fchown", EINVAL);
    EXPECT_THAT(LogOfRename(), HasSubstr(Kept("the owner") + "Invalid argument.\n"));
}

TEST_F(Attributes, GroupIsKeptWhereTheOwnerCannotBe) {
    Own(m_target);
    SystemCalls calls;
    calls.Fail("fchown", EPERM, 1, true);
    EXPECT_EQ(LogOfRename(), Kept("the owner") + "Operation not permitted.\n");
    EXPECT_EQ(StatusOf(m_target).st_uid, 0U);
    EXPECT_EQ(StatusOf(m_target).st_gid, kSomeGroup);
}

TEST_F(Attributes, EveryOtherFailureIsAnErrorBeforeTheRename) {
    Own(m_target);
    Set(m_target, "user.a", "1");
    for (const char* name : {"fchown", "fsetxattr", "fremovexattr", "fchmod", "listxattr", "getxattr",
                             "fstat", "lstat", "open"}) {
        ASSERT_EQ(::unlink(m_temporary.c_str()), 0);
        WriteText(m_temporary, "new", 0640);
        Set(m_temporary, "user.b", "1");
        std::string message;
        {
            SystemCalls calls;
            calls.Fail(name, EIO);
            message = MessageOf<EZETError>([&] { Rename(); });
            EXPECT_EQ(calls.Count("rename"), 0) << name;
        }
        EXPECT_THAT(message, HasSubstr("Input/output error")) << name;
        EXPECT_THAT(message, HasSubstr(m_target)) << name;
        EXPECT_EQ(ReadText(m_target), "old") << name;
        EXPECT_EQ(ReadText(m_temporary), "new") << name;
        const unsigned mode = StatusOf(m_temporary).st_mode & 07777U;
        EXPECT_TRUE(mode == 0640U || name == std::string("fchmod")) << name;
    }
}

TEST_F(Attributes, FullFileSystemIsNamedAsTheReason) {
    Set(m_target, "user.a", "1");
    SystemCalls calls;
    calls.Fail("fsetxattr", ENOSPC);
    EXPECT_EQ(MessageOf<EZETError>([&] { Rename(); }),
              "Failed to keep attribute 'user.a' of file '" + m_temporary + "': No space left on device.");
}

TEST_F(Attributes, FileSystemWithoutAttributesIsNoMatter) {
    Own(m_target);
    SystemCalls calls;
    calls.Fail("listxattr", ENOTSUP);
    EXPECT_EQ(LogOfRename(), "");
    EXPECT_EQ(StatusOf(m_target).st_uid, kSomeUser);
}

TEST_F(Attributes, AttributeThatGoesMeanwhileIsNoMatter) {
    Set(m_target, "user.a", "1");
    SystemCalls calls;
    calls.Fail("getxattr", ENODATA);
    EXPECT_EQ(LogOfRename(), "");
    EXPECT_EQ(ReadText(m_target), "new");
}

TEST_F(Attributes, LinkPutInPlaceOfTheNewTextAtTheLastMomentIsNotTouchedThrough) {
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

TEST_F(Attributes, OwnerComesBeforeTheBitsThatGiveHisRights) {
    Own(m_target);
    WriteText(m_temporary, "new", 06755);
    SystemCalls calls;
    Rename();
    EXPECT_THAT(calls.Calls({"fchmod", "fchown"}),
                ElementsAre("fchmod target.tmp 0600", "fchown target.tmp", "fchmod target.tmp 6755"));
}

TEST_F(Attributes, RightsOfAnOwnerWhoCouldNotBeGivenAreLeftOut) {
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

TEST_F(Attributes, RightsAreNotTakenFromAFileThatSomebodyElseMayHaveChosen) {
    WriteText(m_directory / "real", "real");
    const std::vector<std::function<int()>> ways = {
        [&] { return ::symlink("real", m_target.c_str()); },
        [&] { return ::link((m_directory / "real").c_str(), m_target.c_str()); },
    };
    for (const auto& lead : ways) {
        for (const mode_t mode : {04755U, 02755U}) {
            for (const bool isOthers : {false, true}) {
                ASSERT_EQ(::unlink(m_target.c_str()), 0);
                ASSERT_EQ(lead(), 0);
                WriteText(m_temporary, "new", mode);
                if (isOthers) Own(m_directory / "real");
                Rename();
                EXPECT_EQ(ModeOf(m_target), 0755U);
                EXPECT_EQ(StatusOf(m_target).st_uid, StatusOf(m_directory / "real").st_uid);
            }
        }
    }
}

TEST_F(Attributes, RefusedModeIsAWarningAndTheFileStaysAsItIs) {
    Own(m_target);
    Set(m_target, "user.a", "1");
    for (const int error : {EPERM, ENOTSUP}) {
        SystemCalls calls;
        calls.Fail("fchmod", error);
        EXPECT_THAT(LogOfRename(), HasSubstr(Kept("the attributes")));
        EXPECT_THAT(calls.Calls({"fsetxattr", "fchown"}), ElementsAre());
        EXPECT_EQ(ModeOf(m_target), 0640U);
        EXPECT_EQ(ReadText(m_target), "new");
        WriteText(m_temporary, "new", 0640);
        Own(m_target);
    }
}

TEST_F(Attributes, ModeThatIsNotComeBackIsAnErrorBeforeTheRename) {
    Own(m_target);
    SystemCalls calls;
    calls.Fail("fchmod", EPERM, 2);
    EXPECT_EQ(MessageOf<EZETError>([&] { Rename(); }),
              "Failed to set the mode of file '" + m_temporary + "': Operation not permitted.");
    EXPECT_EQ(ReadText(m_target), "old");
}

TEST_F(Attributes, TheyAreThoseOfTheFileThatWasOpened) {
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

TEST_F(Attributes, PipeInPlaceOfTheTargetIsReplacedAtOnce) {
    ASSERT_EQ(::unlink(m_target.c_str()), 0);
    ASSERT_EQ(::mkfifo(m_target.c_str(), 0600), 0);
    Rename();
    EXPECT_EQ(ReadText(m_target), "new");
}

TEST_F(Attributes, OwnerOfAFileThatMayOnlyBeWrittenGetsThem) {
    Own(m_directory.Path());
    Own(m_target);
    Set(m_target, kAcl, Acl(kSomeUser, 6, 6));
    WriteText(m_temporary, "new", 0200);
    Own(m_temporary);
    EXPECT_EXIT(
        {
            BecomeSomeUser();
            Rename();
            std::_Exit(0);
        },
        testing::ExitedWithCode(0), "^$");
    EXPECT_NE(Get(m_target, kAcl), "-");
    EXPECT_EQ(ModeOf(m_target), 0200U);
}

TEST_F(Attributes, FileThatItsOwnerMayNotOpenIsRenamedWithAWarning) {
    Own(m_directory.Path());
    Own(m_target);
    Set(m_target, kAcl, Acl(kSomeUser, 6, 6));
    WriteText(m_temporary, "new", 0);
    Own(m_temporary);
    EXPECT_EXIT(
        {
            BecomeSomeUser();
            Rename();
            std::_Exit(0);
        },
        testing::ExitedWithCode(0), "Failed to keep the attributes of file .*Permission denied");
    EXPECT_EQ(ReadText(m_target), "new");
    EXPECT_EQ(ModeOf(m_target), 0U);
}

TEST_F(Attributes, OrdinaryUserIsWarnedAndGetsTheFile) {
    Own(m_directory.Path());
    Own(m_temporary);
    WriteText(m_temporary, "new", 0444);
    Set(m_target, "user.a", "1");
    EXPECT_EXIT(
        {
            BecomeSomeUser();
            Rename();
            std::_Exit(ReadText(m_target) == "new" ? 0 : 1);
        },
        testing::ExitedWithCode(0), "warning: Failed to keep the owner of file .*Operation not permitted");
    EXPECT_EQ(Get(m_target, "user.a"), "1") << "although the file is read-only";
    EXPECT_EQ(ModeOf(m_target), 0444U);
    EXPECT_EQ(StatusOf(m_target).st_uid, kSomeUser);
}

TEST_F(Attributes, OrdinaryUserMayReplaceWhatHeMayNotRead) {
    Own(m_directory.Path());
    Own(m_temporary);
    WriteText(m_target, "old", 0600);
    Set(m_target, "user.a", "1");
    EXPECT_EXIT(
        {
            BecomeSomeUser();
            Rename();
            std::_Exit(ReadText(m_target) == "new" ? 0 : 1);
        },
        testing::ExitedWithCode(0), "warning: Failed to keep attribute 'user.a'");
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

TEST_F(Attributes, CopyThatCannotHaveThemIsWhollyMadeOrNotAtAll) {
    Own(m_target);
    {
        SystemCalls calls;
        calls.Fail("fchown", EIO);
        MessageOf<EZETError>([&] { CopyFile(m_target, m_reserve); });
        EXPECT_FALSE(Exists(m_reserve));
        EXPECT_THAT(m_directory.Names(), ElementsAre("target", "target.tmp"));
    }
    SystemCalls calls;
    calls.Fail("fchown", EPERM);
    EXPECT_THAT(LoggedBy([&] { CopyFile(m_target, m_reserve); }),
                HasSubstr("warning: Failed to keep the owner"));
    EXPECT_EQ(ReadText(m_reserve), "old");
}

TEST_F(Attributes, CopyNeverGivesTheRightsOfAnotherOwner) {
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
