#include <sys/mount.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "Support.h"
#include "SystemCalls.h"
#include "zet/ZETFiles.h"

namespace ZET::Test {
namespace {

using testing::ElementsAre;

class CopyFile : public testing::Test {
  protected:
    void Copy() { ZET::CopyFile(m_from, m_to); }

    std::string Refusal() {
        return MessageOf<EZETError>([&] { Copy(); });
    }

    std::string Failure(const std::string& reason) {
        return "Failed to copy file '" + m_from + "' to '" + m_to + "': " + reason + ".";
    }

    TemporaryDirectory m_directory;
    const std::string m_from = m_directory / "from";
    const std::string m_to = m_directory / "to";
};

TEST_F(CopyFile, CopyHasTheSameBytesAndMode) {
    const std::string text("line\n\0\xff last", 12);
    WriteText(m_from, text, 0604);
    Copy();
    EXPECT_THAT(m_directory.Names(), ElementsAre("from", "to"));
    EXPECT_EQ(ReadText(m_to), text);
    EXPECT_EQ(ReadText(m_from), text);
    EXPECT_EQ(ModeOf(m_to), 0604U);
    EXPECT_EQ(StatusOf(m_to).st_nlink, 1U);
}

TEST_F(CopyFile, ModeDoesNotDependOnTheFileCreationMask) {
    WriteText(m_from, "text", 06666);
    const mode_t former = ::umask(077);
    Copy();
    ::umask(former);
    EXPECT_EQ(ModeOf(m_to), 06666U);
}

TEST_F(CopyFile, ReplacesAnExistingFileWhole) {
    WriteText(m_from, "new");
    WriteText(m_to, "old and longer", 0600);
    ASSERT_EQ(::link(m_to.c_str(), (m_directory / "other-name").c_str()), 0);
    Copy();
    EXPECT_EQ(ReadText(m_to), "new");
    EXPECT_EQ(ReadText(m_directory / "other-name"), "old and longer");
}

TEST_F(CopyFile, EmptyAndLargeFilesAreCopied) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{3'000'001}}) {
        WriteText(m_from, std::string(size, 'x'));
        Copy();
        EXPECT_EQ(ReadText(m_to), std::string(size, 'x'));
    }
}

TEST_F(CopyFile, FileThatDoesNotTellItsSizeIsCopiedWhole) {
    ZET::CopyFile("/proc/self/limits", m_to);
    EXPECT_EQ(ReadText(m_to), ReadText("/proc/self/limits"));
}

TEST_F(CopyFile, LinkToTheSourceIsFollowed) {
    WriteText(m_directory / "real", "text", 0640);
    ASSERT_EQ(::symlink("real", m_from.c_str()), 0);
    Copy();
    EXPECT_TRUE(S_ISREG(StatusOf(m_to).st_mode));
    EXPECT_EQ(ReadText(m_to), "text");
    EXPECT_EQ(ModeOf(m_to), 0640U);
}

TEST_F(CopyFile, LinkInPlaceOfTheTargetIsReplaced) {
    WriteText(m_from, "text");
    WriteText(m_directory / "precious", "precious");
    ASSERT_EQ(::symlink("precious", m_to.c_str()), 0);
    Copy();
    EXPECT_TRUE(S_ISREG(StatusOf(m_to).st_mode));
    EXPECT_EQ(ReadText(m_directory / "precious"), "precious");
}

TEST_F(CopyFile, MissingSourceIsAnErrorAndLeavesNothing) {
    EXPECT_EQ(Refusal(), Failure("No such file or directory"));
    EXPECT_THAT(m_directory.Names(), ElementsAre());
}

TEST_F(CopyFile, LinkThatLeadsNowhereIsCalledOne) {
    ASSERT_EQ(::symlink("none", m_from.c_str()), 0);
    EXPECT_EQ(Refusal(),
              Failure("the former is a link that leads nowhere (remove it, or make what it names)"));
}

TEST_F(CopyFile, SourceThatIsNoRegularFileIsAnErrorAtOnce) {
    ASSERT_EQ(::mkfifo(m_from.c_str(), 0600), 0);
    EXPECT_EQ(Refusal(), Failure("not a regular file"));
    ASSERT_EQ(::unlink(m_from.c_str()), 0);
    ASSERT_EQ(::mkdir(m_from.c_str(), 0755), 0);
    EXPECT_EQ(Refusal(), Failure("not a regular file"));
    EXPECT_THAT(m_directory.Names(), ElementsAre("from"));
}

TEST_F(CopyFile, DirectoryInPlaceOfTheTargetIsAnErrorAndLeavesNothing) {
    WriteText(m_from, "text");
    ASSERT_EQ(::mkdir(m_to.c_str(), 0755), 0);
    EXPECT_EQ(Refusal(), Failure("Is a directory"));
    EXPECT_THAT(m_directory.Names(), ElementsAre("from", "to"));
}

TEST_F(CopyFile, MissingTargetDirectoryIsAnError) {
    WriteText(m_from, "text");
    EXPECT_EQ(MessageOf<EZETError>([&] { ZET::CopyFile(m_from, m_directory / "none/to"); }),
              "Failed to open directory '" + m_directory / "none" + "': No such file or directory.");
}

TEST_F(CopyFile, FileNamedAsATemporaryOneIsLeftAlone) {
    WriteText(m_from, "text");
    WriteText(m_to + ".tmp", "somebody's");
    Copy();
    EXPECT_THAT(m_directory.Names(), ElementsAre("from", "to", "to.tmp"));
    EXPECT_EQ(ReadText(m_to + ".tmp"), "somebody's");
}

TEST_F(CopyFile, CopyHasANameOfItsOwnOnTheWay) {
    WriteText(m_from, "text");
    std::set<std::string> names;
    for (int i = 0; i < 2; i++) {
        SystemCalls calls;
        calls.Before("rename", [&] {
            for (const std::string& name : m_directory.Names())
                if (IsCopyOf(name, "to") && IsCopyOf(m_directory / name, m_to)) names.insert(name);
        });
        Copy();
    }
    EXPECT_EQ(names.size(), 2U);
}

TEST_F(CopyFile, LongestNameHasACopyToo) {
    WriteText(m_from, "text");
    for (const std::size_t size : {243U, 244U, 245U, 255U}) {
        const std::string to(size, 'x');
        std::string copy;
        SystemCalls calls;
        calls.Before("rename", [&] {
            for (const std::string& name : m_directory.Names())
                if (IsCopyOf(name, to)) copy = name;
        });
        ZET::CopyFile(m_from, m_directory / to);
        EXPECT_EQ(ReadText(m_directory / to), "text");
        EXPECT_EQ(copy.size(), std::min<std::size_t>(size + 11, 255));
    }
}

TEST_F(CopyFile, NameOfACopyIsKnown) {
    EXPECT_TRUE(IsCopyOf("to.aZ09bc.tmp", "to"));
    EXPECT_TRUE(IsCopyOf("/a/to.before_zet.abcdef.tmp", "/a/to.before_zet"));
    for (const char* name : {"to", "to.tmp", "to..tmp", "to.abcde.tmp", "to.abcdefg.tmp", "to.abcde-.tmp",
                             "to.abcdef.tmx", "toabcdef..tmp", "To.abcdef.tmp", "to.abcdef.tmp ", ""})
        EXPECT_FALSE(IsCopyOf(name, "to")) << name;
    EXPECT_FALSE(IsCopyOf("/a/to.abcdef.tmp", "/b/to"));
}

TEST_F(CopyFile, BytesAreDurableBeforeTheNameAndTheNameBeforeTheReturn) {
    WriteText(m_from, "text");
    SystemCalls calls;
    Copy();
    const std::string directory = m_directory.Path().substr(m_directory.Path().rfind('/') + 1);
    EXPECT_THAT(calls.Calls({"fsync", "rename"}),
                ElementsAre("fsync to.XXXXXX.tmp", "rename to.XXXXXX.tmp to", "fsync " + directory));
}

TEST_F(CopyFile, CopyIsClosedToOthersUntilItIsComplete) {
    WriteText(m_from, "secret", 0644);
    SystemCalls calls;
    calls.Fail("fchmod", EIO);
    calls.Fail("unlink", EIO);
    Refusal();
    const std::vector<std::string> names = m_directory.Names();
    ASSERT_EQ(names.size(), 2U);
    EXPECT_TRUE(IsCopyOf(names[1], "to")) << names[1];
    EXPECT_EQ(ModeOf(m_directory / names[1]), 0600U);
}

TEST_F(CopyFile, EveryFailureLeavesTheFormerTargetAndNothingElse) {
    WriteText(m_from, "new");
    WriteText(m_to, "old");
    for (const char* name : {"read", "write", "fchmod", "fsync", "close", "rename"}) {
        {
            SystemCalls calls;
            calls.Fail("copy_file_range", ENOSYS);
            calls.Fail(name, EIO);
            EXPECT_THAT(Refusal(), testing::HasSubstr("Input/output error")) << name;
            EXPECT_GT(calls.Count(name), 0) << name;
        }
        EXPECT_EQ(ReadText(m_to), "old") << name;
        EXPECT_THAT(m_directory.Names(), ElementsAre("from", "to")) << name;
    }
}

TEST_F(CopyFile, FullFileSystemIsAnErrorAndLeavesNothing) {
    if (!IsRoot()) GTEST_SKIP() << "mounts a small file system";
    const std::string mount = m_directory / "small";
    ASSERT_EQ(::mkdir(mount.c_str(), 0755), 0);
    ASSERT_EQ(::mount("none", mount.c_str(), "tmpfs", 0, "size=64k"), 0);
    WriteText(m_from, std::string(200'000, 'x'));
    WriteText(mount + "/to", "old");
    const std::string message = MessageOf<EZETError>([&] { ZET::CopyFile(m_from, mount + "/to"); });
    const std::string text = ReadText(mount + "/to");
    const auto count = std::distance(std::filesystem::directory_iterator(mount), {});
    ASSERT_EQ(::umount(mount.c_str()), 0);
    EXPECT_EQ(message,
              "Failed to copy file '" + m_from + "' to '" + mount + "/to': No space left on device.");
    EXPECT_EQ(text, "old");
    EXPECT_EQ(count, 1) << "something is left";
}

TEST_F(CopyFile, OtherFileSystemIsReached) {
    if (!IsRoot()) GTEST_SKIP() << "mounts a small file system";
    const std::string mount = m_directory / "small";
    ASSERT_EQ(::mkdir(mount.c_str(), 0755), 0);
    ASSERT_EQ(::mount("none", mount.c_str(), "tmpfs", 0, "size=1m"), 0);
    WriteText(m_from, std::string(200'000, 'x'));
    ZET::CopyFile(m_from, mount + "/to");
    const std::string text = ReadText(mount + "/to");
    ASSERT_EQ(::umount(mount.c_str()), 0);
    EXPECT_EQ(text, std::string(200'000, 'x'));
}

TEST_F(CopyFile, WithoutHelpOfTheKernelItReadsAndWrites) {
    std::string text;
    for (int i = 0; i < 30'000; i++)
        text += std::to_string(i) + "\n";
    WriteText(m_from, text);
    SystemCalls calls;
    calls.Fail("copy_file_range", EXDEV);
    calls.Fail("read", EINTR, 2, true);
    calls.Fail("write", EINTR, 2, true);
    calls.Shorten("read", 50'000);
    calls.Shorten("write", 777);
    Copy();
    EXPECT_GT(calls.Count("write"), 100);
    EXPECT_EQ(ReadText(m_to), text);
}

TEST_F(CopyFile, KernelThatFindsNoRoomIsBelieved) {
    WriteText(m_from, "text");
    for (const int error : {ENOSPC, EDQUOT}) {
        SystemCalls calls;
        calls.Fail("copy_file_range", error);
        EXPECT_THAT(Refusal(), testing::StartsWith("Failed to copy file '"));
        EXPECT_EQ(calls.Count("write"), 0);
        EXPECT_THAT(m_directory.Names(), ElementsAre("from"));
    }
}

TEST_F(CopyFile, KernelThatStopsHalfwayIsGoneOnFrom) {
    std::string text;
    for (int i = 0; i < 30'000; i++)
        text += std::to_string(i) + "\n";
    WriteText(m_from, text);
    SystemCalls calls;
    calls.Shorten("copy_file_range", 12'345);
    calls.Fail("copy_file_range", EIO, 4);
    Copy();
    EXPECT_EQ(calls.Count("copy_file_range"), 4);
    EXPECT_EQ(ReadText(m_to), text);
}

TEST_F(CopyFile, WhatTellsItsSizeIsNotAskedForMore) {
    WriteText(m_from, "text");
    SystemCalls calls;
    Copy();
    EXPECT_EQ(calls.Count("copy_file_range"), 1);
    EXPECT_EQ(calls.Count("read"), 0);
    EXPECT_EQ(ReadText(m_to), "text");
}

TEST_F(CopyFile, CopyOntoItselfKeepsTheText) {
    WriteText(m_from, "text", 0640);
    ZET::CopyFile(m_from, m_from);
    EXPECT_EQ(ReadText(m_from), "text");
    EXPECT_EQ(ModeOf(m_from), 0640U);
    EXPECT_THAT(m_directory.Names(), ElementsAre("from"));
}

TEST_F(CopyFile, NoDescriptorIsLeftOpen) {
    WriteText(m_from, "text");
    for (const char* name : {"none", "read", "fchmod", "fsync", "rename", "fstat", "listxattr"}) {
        SystemCalls calls;
        calls.Fail("copy_file_range", EIO);
        calls.Fail(name, EIO);
        try {
            Copy();
            EXPECT_STREQ(name, "none");
        } catch (const EZETError&) {
            EXPECT_STRNE(name, "none");
        }
        EXPECT_GE(calls.Count("open"), 2) << name;
        EXPECT_EQ(calls.Count("open"), calls.Count("close")) << name;
    }
}

}  // namespace
}  // namespace ZET::Test
