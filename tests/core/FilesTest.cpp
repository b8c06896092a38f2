#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <functional>

#include "Support.h"
#include "SystemCalls.h"
#include "zet/ZETFiles.h"

namespace ZET::Test {
namespace {

using testing::ElementsAre;

class Files : public testing::Test {
  protected:
    TemporaryDirectory m_directory;
    const std::string m_path = m_directory / "file";
    const std::string m_missing = m_directory / "no-such-directory/file";
};

TEST_F(Files, CreateMakesAnEmptyFile) {
    CreateFile(m_path);
    EXPECT_EQ(ReadText(m_path), "");
    EXPECT_THAT(m_directory.Names(), ElementsAre("file"));
}

TEST_F(Files, CreateObeysTheFileCreationMask) {
    const mode_t former = ::umask(027);
    CreateFile(m_path);
    ::umask(former);
    EXPECT_EQ(ModeOf(m_path), 0640U);
}

TEST_F(Files, CreateEmptiesAnExistingFileAndKeepsItsMode) {
    WriteText(m_path, "text", 0604);
    CreateFile(m_path);
    EXPECT_EQ(ReadText(m_path), "");
    EXPECT_EQ(ModeOf(m_path), 0604U);
}

TEST_F(Files, CreateInAMissingDirectoryIsAnErrorWithPathAndReason) {
    EXPECT_EQ(
        MessageOf<EZETError>([&] { CreateFile(m_missing); }),
        "Failed to open directory '" + m_directory / "no-such-directory" + "': No such file or directory.");
}

/// What the core knows of the error that `action` ends with.
ZETCause CauseOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const EZETHostError& error) {
        EXPECT_EQ(error.GetErrorNumber(), error.GetCause().errorNumber);
        return error.GetCause();
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}

TEST_F(Files, ErrorOfTheSystemKnowsItsNumberAndThePath) {
    EXPECT_EQ(CauseOf([&] { CreateFile(m_missing); }).errorNumber, ENOENT);
    EXPECT_EQ(CauseOf([&] { CreateFile(m_missing); }).path, m_directory / "no-such-directory");
    EXPECT_EQ(CauseOf([&] { RemoveFile(m_path); }).errorNumber, ENOENT);
    EXPECT_EQ(CauseOf([&] { RemoveFile(m_path); }).path, m_path);
    EXPECT_EQ(CauseOf([&] { RemoveFile(m_path); }).remedy, "");
}

TEST_F(Files, ErrorOfACopyIsAboutTheFileThatItComesFromOrGoesTo) {
    SystemCalls calls;
    EXPECT_EQ(CauseOf([&] { CopyFile(m_path, m_directory / "to"); }).path, m_path);
    WriteText(m_path, "text");
    calls.Fail("rename", EIO);
    EXPECT_EQ(CauseOf([&] { CopyFile(m_path, m_directory / "to"); }).path, m_directory / "to");
    EXPECT_EQ(CauseOf([&] { RenameFile(m_path, m_directory / "to"); }).errorNumber, EIO);
}

TEST_F(Files, ErrorThatIsNotTheSystemsHasNoNumber) {
    WriteText(m_path, "text");
    ASSERT_EQ(::link(m_path.c_str(), (m_directory / "other").c_str()), 0);
    errno = EIO;
    EXPECT_EQ(CauseOf([&] { CreateFile(m_path); }).errorNumber, 0);
    EXPECT_EQ(CauseOf([&] { CreateFile(m_path); }).path, m_path);
}

TEST_F(Files, CreateOverADirectoryIsAnError) {
    ASSERT_EQ(::mkdir(m_path.c_str(), 0755), 0);
    EXPECT_EQ(MessageOf<EZETError>([&] { CreateFile(m_path); }),
              "Failed to create file '" + m_path + "': Is a directory.");
}

TEST_F(Files, CreateDoesNotFollowALink) {
    WriteText(m_directory / "precious", "text");
    ASSERT_EQ(::symlink("precious", m_path.c_str()), 0);
    EXPECT_EQ(MessageOf<EZETError>([&] { CreateFile(m_path); }),
              "Failed to create file '" + m_path + "': Too many levels of symbolic links.");
    EXPECT_EQ(ReadText(m_directory / "precious"), "text");
}

TEST_F(Files, CreateOverAPipeIsAnErrorAtOnce) {
    ASSERT_EQ(::mkfifo(m_path.c_str(), 0600), 0);
    EXPECT_EQ(MessageOf<EZETError>([&] { CreateFile(m_path); }),
              "Failed to create file '" + m_path + "': No such device or address.");
}

TEST_F(Files, CreateOverADeviceIsAnError) {
    ASSERT_EQ(MessageOf<EZETError>([&] { CreateFile("/dev/null"); }),
              "Failed to create file '/dev/null': not a regular file with one name (move it away).");
}

TEST_F(Files, CreateDoesNotEmptyAFileThatHasASecondName) {
    WriteText(m_directory / "precious", "text");
    ASSERT_EQ(::link((m_directory / "precious").c_str(), m_path.c_str()), 0);
    EXPECT_EQ(MessageOf<EZETError>([&] { CreateFile(m_path); }),
              "Failed to create file '" + m_path + "': not a regular file with one name (move it away).");
    EXPECT_EQ(ReadText(m_directory / "precious"), "text");
}

TEST_F(Files, CreateThatCannotEmptyTheFileIsAnError) {
    WriteText(m_path, "text");
    SystemCalls calls;
    calls.Fail("ftruncate", EIO);
    EXPECT_EQ(MessageOf<EZETError>([&] { CreateFile(m_path); }),
              "Failed to create file '" + m_path + "': Input/output error.");
}

TEST_F(Files, CreateThatCannotBeMadeDurableLeavesNoNewFile) {
    for (const int turn : {1, 2}) {
        SystemCalls calls;
        calls.Fail("fsync", EIO, turn);
        MessageOf<EZETError>([&] { CreateFile(m_path); });
        EXPECT_FALSE(Exists(m_path)) << turn;
    }
}

TEST_F(Files, CreateThatCannotBeMadeDurableLeavesTheNameOfAFileThatWasThere) {
    for (const int turn : {1, 2}) {
        WriteText(m_path, "text");
        SystemCalls calls;
        calls.Fail("fsync", EIO, turn);
        MessageOf<EZETError>([&] { CreateFile(m_path); });
        EXPECT_TRUE(Exists(m_path)) << turn;
    }
}

TEST_F(Files, CreateOnAFullFileSystemIsAnErrorAndLeavesNothing) {
    if (!IsRoot()) GTEST_SKIP() << "mounts a small file system";
    const std::string mount = m_directory / "small";
    ASSERT_EQ(::mkdir(mount.c_str(), 0755), 0);
    ASSERT_EQ(::mount("none", mount.c_str(), "tmpfs", 0, "size=16k,nr_inodes=2"), 0);
    CreateFile(mount + "/one");
    const std::string message = MessageOf<EZETError>([&] { CreateFile(mount + "/two"); });
    const bool exists = Exists(mount + "/two");
    ASSERT_EQ(::umount(mount.c_str()), 0);
    EXPECT_EQ(message, "Failed to create file '" + mount + "/two': No space left on device.");
    EXPECT_FALSE(exists);
}

TEST_F(Files, RemoveTakesTheNameAway) {
    WriteText(m_path, "text");
    RemoveFile(m_path);
    EXPECT_THAT(m_directory.Names(), ElementsAre());
}

TEST_F(Files, RemoveOfALinkLeavesWhatItLeadsTo) {
    WriteText(m_directory / "precious", "text");
    ASSERT_EQ(::symlink("precious", m_path.c_str()), 0);
    RemoveFile(m_path);
    EXPECT_THAT(m_directory.Names(), ElementsAre("precious"));
}

TEST_F(Files, RemoveOfAMissingFileIsAnError) {
    EXPECT_EQ(MessageOf<EZETError>([&] { RemoveFile(m_path); }),
              "Failed to remove file '" + m_path + "': No such file or directory.");
}

TEST_F(Files, RootDirectoryIsADirectoryLikeOthers) {
    EXPECT_EQ(MessageOf<EZETError>([] { RemoveFile("/zet-no-such-file"); }),
              "Failed to remove file '/zet-no-such-file': No such file or directory.");
}

TEST_F(Files, RemoveOfADirectoryIsAnError) {
    ASSERT_EQ(::mkdir(m_path.c_str(), 0755), 0);
    EXPECT_EQ(MessageOf<EZETError>([&] { RemoveFile(m_path); }),
              "Failed to remove file '" + m_path + "': Is a directory.");
    EXPECT_TRUE(Exists(m_path));
}

TEST_F(Files, ExistenceIsTold) {
    EXPECT_FALSE(IsFileExist(m_path));
    WriteText(m_path, "");
    EXPECT_TRUE(IsFileExist(m_path));
    EXPECT_TRUE(IsFileExist(m_directory.Path()));
}

TEST_F(Files, DanglingLinkExists) {
    ASSERT_EQ(::symlink("nowhere", m_path.c_str()), 0);
    EXPECT_TRUE(IsFileExist(m_path));
}

TEST_F(Files, PathThroughAMissingDirectoryOrAFileDoesNotExist) {
    WriteText(m_path, "");
    EXPECT_FALSE(IsFileExist(m_missing));
    EXPECT_FALSE(IsFileExist(m_path + "/below"));
}

TEST_F(Files, NameThatIsTooLongDoesNotExist) {
    EXPECT_FALSE(IsFileExist(m_directory / std::string(256, 'x')));
    EXPECT_FALSE(IsFileExist(m_directory / std::string(5000, 'x')));
    std::string deep = m_directory.Path();
    for (int i = 0; i < 2500; i++)
        deep += "/.";
    EXPECT_FALSE(IsFileExist(deep + "/file"));
}

TEST_F(Files, NotBeingAbleToTellIsAnError) {
    ASSERT_EQ(::symlink("loop", (m_directory / "loop").c_str()), 0);
    const std::string path = m_directory / "loop/file";
    EXPECT_EQ(MessageOf<EZETError>([&] { IsFileExist(path); }),
              "Failed to check file '" + path + "': Too many levels of symbolic links.");
}

TEST_F(Files, NotBeingAllowedToTellIsAnError) {
    if (!IsRoot()) GTEST_SKIP() << "changes to another user";
    ASSERT_EQ(::chmod(m_directory.Path().c_str(), 0700), 0);
    EXPECT_EXIT(
        {
            BecomeSomeUser();
            const std::string message = MessageOf<EZETError>([&] { IsFileExist(m_path); });
            std::_Exit(message == "Failed to check file '" + m_path + "': Permission denied." ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(Files, EmptyPathIsABadArgumentOfTheHelper) {
    EXPECT_EQ(MessageOf<EZETCheckError>([] { CreateFile(""); }), "Argument is empty for 'CreateFile'.");
    EXPECT_EQ(MessageOf<EZETCheckError>([] { RemoveFile(""); }), "Argument is empty for 'RemoveFile'.");
    EXPECT_EQ(MessageOf<EZETCheckError>([] { IsFileExist(""); }), "Argument is empty for 'IsFileExist'.");
    EXPECT_EQ(MessageOf<EZETCheckError>([&] { RenameFile("", m_path); }),
              "Argument is empty for 'RenameFile'.");
    EXPECT_EQ(MessageOf<EZETCheckError>([&] { RenameFile(m_path, ""); }),
              "Argument is empty for 'RenameFile'.");
    EXPECT_EQ(MessageOf<EZETCheckError>([&] { CopyFile("", m_path); }), "Argument is empty for 'CopyFile'.");
    EXPECT_EQ(MessageOf<EZETCheckError>([&] { CopyFile(m_path, ""); }), "Argument is empty for 'CopyFile'.");
}

TEST_F(Files, PathIsNotCutAtANulByte) {
    WriteText(m_path, "text");
    const std::string path = m_path + '\0' + "x";
    for (const auto& action : std::vector<std::function<void()>>{
             [&] { CreateFile(path); }, [&] { RemoveFile(path); }, [&] { IsFileExist(path); },
             [&] { RenameFile(path, "x"); }, [&] { RenameFile(m_path, path); }, [&] { CopyFile(path, "x"); },
             [&] { CopyFile(m_path, path); }})
        EXPECT_EQ(MessageOf<EZETCheckError>(action), "File name '" + m_path + "\\x00x' holds a NUL byte.");
    EXPECT_EQ(ReadText(m_path), "text");
}

TEST_F(Files, ConversionsInANameAreHarmless) {
    const std::string path = m_directory / "%s%n%m";
    EXPECT_EQ(MessageOf<EZETError>([&] { RemoveFile(path); }),
              "Failed to remove file '" + path + "': No such file or directory.");
}

TEST_F(Files, NamesWithoutADirectoryAreInTheWorkingDirectory) {
    char former[4096];
    ASSERT_NE(::getcwd(former, sizeof former), nullptr);
    ASSERT_EQ(::chdir(m_directory.Path().c_str()), 0);
    CreateFile("a");
    RenameFile("a", "b");
    CopyFile("b", "c");
    RemoveFile("b");
    EXPECT_TRUE(IsFileExist("c"));
    ASSERT_EQ(::chdir(former), 0);
    EXPECT_THAT(m_directory.Names(), ElementsAre("c"));
}

}  // namespace
}  // namespace ZET::Test
