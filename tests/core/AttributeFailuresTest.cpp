#include "AttributesFixture.h"

namespace ZET::Test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class AttributeFailures : public Attributes {};

TEST_F(AttributeFailures, WhatMayNotBeDoneIsAWarning) {
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

TEST_F(AttributeFailures, OwnerWhomTheNamespaceDoesNotKnowIsAWarning) {
    Own(m_target);
    SystemCalls calls;
    calls.Fail("fchown", EINVAL);
    EXPECT_THAT(LogOfRename(), HasSubstr(Kept("the owner") + "Invalid argument.\n"));
}

TEST_F(AttributeFailures, GroupIsKeptWhereTheOwnerCannotBe) {
    Own(m_target);
    SystemCalls calls;
    calls.Fail("fchown", EPERM, 1, true);
    EXPECT_EQ(LogOfRename(), Kept("the owner") + "Operation not permitted.\n");
    EXPECT_EQ(StatusOf(m_target).st_uid, 0U);
    EXPECT_EQ(StatusOf(m_target).st_gid, kSomeGroup);
}

TEST_F(AttributeFailures, EveryOtherFailureIsAnErrorBeforeTheRename) {
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

TEST_F(AttributeFailures, FullFileSystemIsNamedAsTheReason) {
    Set(m_target, "user.a", "1");
    SystemCalls calls;
    calls.Fail("fsetxattr", ENOSPC);
    EXPECT_EQ(MessageOf<EZETError>([&] { Rename(); }),
              "Failed to keep attribute 'user.a' of file '" + m_temporary + "': No space left on device.");
}

TEST_F(AttributeFailures, FileSystemWithoutAttributesIsNoMatter) {
    Own(m_target);
    SystemCalls calls;
    calls.Fail("listxattr", ENOTSUP);
    EXPECT_EQ(LogOfRename(), "");
    EXPECT_EQ(StatusOf(m_target).st_uid, kSomeUser);
}

TEST_F(AttributeFailures, AttributeThatGoesMeanwhileIsNoMatter) {
    Set(m_target, "user.a", "1");
    SystemCalls calls;
    calls.Fail("getxattr", ENODATA);
    EXPECT_EQ(LogOfRename(), "");
    EXPECT_EQ(ReadText(m_target), "new");
}

TEST_F(AttributeFailures, RefusedModeIsAWarningAndTheFileStaysAsItIs) {
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

TEST_F(AttributeFailures, ModeThatIsNotComeBackIsAnErrorBeforeTheRename) {
    Own(m_target);
    SystemCalls calls;
    calls.Fail("fchmod", EPERM, 2);
    EXPECT_EQ(MessageOf<EZETError>([&] { Rename(); }),
              "Failed to set the mode of file '" + m_temporary + "': Operation not permitted.");
    EXPECT_EQ(ReadText(m_target), "old");
}

TEST_F(AttributeFailures, OwnerOfAFileThatMayOnlyBeWrittenGetsThem) {
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

TEST_F(AttributeFailures, FileThatItsOwnerMayNotOpenIsRenamedWithAWarning) {
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

TEST_F(AttributeFailures, OrdinaryUserIsWarnedAndGetsTheFile) {
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

TEST_F(AttributeFailures, OrdinaryUserMayReplaceWhatHeMayNotRead) {
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

TEST_F(AttributeFailures, OwnersThatTheHostGivesAfterwardsAreNoMessage) {
    Own(m_target);
    ASSERT_EQ(::chmod(m_target.c_str(), 06755), 0);
    SystemCalls calls;
    calls.Fail("fchown", EPERM);
    EXPECT_FALSE(LeaveOwnersToHost(true));
    EXPECT_EQ(LoggedBy([&] { CopyFile(m_target, m_reserve); }), "");
    EXPECT_EQ(ModeOf(m_reserve), 0755U);
    EXPECT_TRUE(LeaveOwnersToHost(false));
    EXPECT_THAT(LoggedBy([&] { CopyFile(m_target, m_reserve); }),
                HasSubstr("warning: Failed to keep the owner"));
}

TEST_F(AttributeFailures, OwnersThatCannotBeGivenForAnotherReasonAreAnErrorWhoeverGivesThem) {
    Own(m_target);
    SystemCalls calls;
    calls.Fail("fchown", EIO);
    LeaveOwnersToHost(true);
    EXPECT_THAT(MessageOf<EZETError>([&] { CopyFile(m_target, m_reserve); }),
                HasSubstr("Failed to keep the owner"));
    LeaveOwnersToHost(false);
}

TEST_F(AttributeFailures, CopyThatCannotHaveThemIsWhollyMadeOrNotAtAll) {
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

}  // namespace
}  // namespace ZET::Test
