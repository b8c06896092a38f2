#include <unistd.h>

#include "Support.h"
#include "SystemCalls.h"
#include "zet/ZETFiles.h"
#include "zet/ZETHost.h"

namespace ZET::Test {
namespace {

using testing::ElementsAre;

class RenameFile : public testing::Test {
  protected:
    void Rename() { ZET::RenameFile(m_from, m_to); }

    std::string Refusal() {
        return MessageOf<EZETError>([&] { Rename(); });
    }

    TemporaryDirectory m_directory;
    const std::string m_from = m_directory / "from";
    const std::string m_to = m_directory / "to";
};

TEST_F(RenameFile, TakesTheNewName) {
    WriteText(m_from, "text", 0604);
    Rename();
    EXPECT_THAT(m_directory.Names(), ElementsAre("to"));
    EXPECT_EQ(ReadText(m_to), "text");
    EXPECT_EQ(ModeOf(m_to), 0604U);
}

TEST_F(RenameFile, ReplacesAnExistingFile) {
    WriteText(m_from, "new", 0600);
    WriteText(m_to, "old", 0644);
    Rename();
    EXPECT_THAT(m_directory.Names(), ElementsAre("to"));
    EXPECT_EQ(ReadText(m_to), "new");
    EXPECT_EQ(ModeOf(m_to), 0600U);
}

TEST_F(RenameFile, MissingFileIsAnErrorWithBothPathsAndReason) {
    WriteText(m_to, "old");
    EXPECT_EQ(Refusal(),
              "Failed to rename file '" + m_from + "' to '" + m_to + "': No such file or directory.");
    EXPECT_EQ(ReadText(m_to), "old");
}

TEST_F(RenameFile, DirectoryIsNotReplaced) {
    WriteText(m_from, "new");
    ASSERT_EQ(::mkdir(m_to.c_str(), 0755), 0);
    EXPECT_EQ(Refusal(), "Failed to rename file '" + m_from + "' to '" + m_to + "': Is a directory.");
    EXPECT_THAT(m_directory.Names(), ElementsAre("from", "to"));
}

TEST_F(RenameFile, MissingTargetDirectoryIsAnErrorBeforeAnythingChanges) {
    WriteText(m_from, "new");
    MessageOf<EZETError>([&] { ZET::RenameFile(m_from, m_directory / "none/to"); });
    EXPECT_THAT(m_directory.Names(), ElementsAre("from"));
}

TEST_F(RenameFile, OtherFileSystemIsAnError) {
    WriteText(m_from, "new");
    EXPECT_EQ(
        MessageOf<EZETError>([&] { ZET::RenameFile(m_from, "/dev/shm/zet-rename-test"); }),
        "Failed to rename file '" + m_from + "' to '/dev/shm/zet-rename-test': Invalid cross-device link.");
    EXPECT_EQ(ReadText(m_from), "new");
    EXPECT_FALSE(Exists("/dev/shm/zet-rename-test"));
}

TEST_F(RenameFile, LinkIsRenamedItself) {
    WriteText(m_directory / "precious", "text", 0600);
    ASSERT_EQ(::symlink("precious", m_from.c_str()), 0);
    Rename();
    EXPECT_TRUE(S_ISLNK(StatusOf(m_to).st_mode));
    EXPECT_EQ(ReadText(m_to), "text");
}

TEST_F(RenameFile, DanglingLinkAndPipeAreRenamedAtOnce) {
    ASSERT_EQ(::symlink("nowhere", m_from.c_str()), 0);
    Rename();
    EXPECT_TRUE(S_ISLNK(StatusOf(m_to).st_mode));
    ASSERT_EQ(::mkfifo(m_from.c_str(), 0600), 0);
    Rename();
    EXPECT_TRUE(S_ISFIFO(StatusOf(m_to).st_mode));
}

TEST_F(RenameFile, LinkInPlaceOfTheTargetIsReplacedAndWhatItLeadsToStays) {
    WriteText(m_directory / "precious", "text");
    ASSERT_EQ(::symlink("precious", m_to.c_str()), 0);
    WriteText(m_from, "new");
    Rename();
    EXPECT_TRUE(S_ISREG(StatusOf(m_to).st_mode));
    EXPECT_EQ(ReadText(m_directory / "precious"), "text");
}

TEST_F(RenameFile, BytesAreDurableBeforeTheNameAndTheNameBeforeTheReturn) {
    WriteText(m_from, "new");
    SystemCalls calls;
    Rename();
    const std::string directory = m_directory.Path().substr(m_directory.Path().rfind('/') + 1);
    EXPECT_THAT(calls.Calls({"fsync", "rename"}),
                ElementsAre("fsync from", "rename from to", "fsync " + directory));
}

TEST_F(RenameFile, BothDirectoriesAreMadeDurable) {
    ASSERT_EQ(::mkdir((m_directory / "a").c_str(), 0755), 0);
    ASSERT_EQ(::mkdir((m_directory / "b").c_str(), 0755), 0);
    WriteText(m_directory / "a/from", "new");
    SystemCalls calls;
    ZET::RenameFile(m_directory / "a/from", m_directory / "b/to");
    EXPECT_THAT(calls.Calls({"fsync", "rename"}),
                ElementsAre("fsync from", "rename from to", "fsync b", "fsync a"));
}

TEST_F(RenameFile, BytesThatCannotBeMadeDurableAreAnErrorBeforeTheRename) {
    WriteText(m_from, "new");
    WriteText(m_to, "old");
    SystemCalls calls;
    calls.Fail("fsync", EIO);
    EXPECT_EQ(Refusal(), "Failed to sync file '" + m_from + "': Input/output error.");
    EXPECT_EQ(calls.Count("rename"), 0);
    EXPECT_EQ(ReadText(m_to), "old");
    EXPECT_EQ(ReadText(m_from), "new");
}

TEST_F(RenameFile, DirectoryThatCannotBeMadeDurableIsAnError) {
    WriteText(m_from, "new");
    SystemCalls calls;
    calls.Fail("fsync", EIO, 2);
    EXPECT_EQ(Refusal(), "Failed to sync directory '" + m_directory.Path() + "': Input/output error.");
}

TEST_F(RenameFile, FileSystemWithoutSyncingIsNoError) {
    WriteText(m_from, "new");
    SystemCalls calls;
    calls.Fail("fsync", EINVAL);
    Rename();
    EXPECT_EQ(ReadText(m_to), "new");
}

TEST_F(RenameFile, InterruptedSyncIsRepeated) {
    WriteText(m_from, "new");
    SystemCalls calls;
    calls.Fail("fsync", EINTR, 1, true);
    Rename();
    EXPECT_EQ(calls.Count("fsync"), 3);
}

TEST_F(RenameFile, FailedRenameIsAnErrorAndChangesNothing) {
    WriteText(m_from, "new");
    WriteText(m_to, "old");
    SystemCalls calls;
    calls.Fail("rename", EROFS);
    EXPECT_EQ(Refusal(), "Failed to rename file '" + m_from + "' to '" + m_to + "': Read-only file system.");
    EXPECT_EQ(ReadText(m_to), "old");
}

TEST_F(RenameFile, FileThatMayNotBeReadIsSyncedWithEverythingElse) {
    WriteText(m_from, "new");
    SystemCalls calls;
    calls.Fail("open", EACCES);
    Rename();
    EXPECT_EQ(ReadText(m_to), "new");
    EXPECT_THAT(calls.Calls({"sync", "rename"}), ElementsAre("sync ", "rename from to", "sync "));
}

TEST_F(RenameFile, FileThatCannotBeOpenedIsAnErrorBeforeTheRename) {
    WriteText(m_from, "new");
    SystemCalls calls;
    calls.Fail("open", EMFILE, 2);
    EXPECT_EQ(Refusal(), "Failed to sync file '" + m_from + "': Too many open files.");
    EXPECT_EQ(calls.Count("rename"), 0);
}

TEST_F(RenameFile, NoDescriptorIsLeftOpen) {
    WriteText(m_from, "new");
    SystemCalls calls;
    Rename();
    MessageOf<EZETError>([&] { Rename(); });
    EXPECT_EQ(calls.Count("open"), calls.Count("close"));
}

TEST_F(RenameFile, GuardSeesBothFilesAsTheyWere) {
    WriteText(m_from, "new");
    WriteText(m_to, "old");
    std::string seen;
    SetRenameGuard([&](const ZETRename& rename) {
        seen = rename.from + " " + rename.to + " " + ReadText(rename.from) + " " + ReadText(rename.to);
    });
    Rename();
    EXPECT_EQ(seen, m_from + " " + m_to + " new old");
    EXPECT_EQ(ReadText(m_to), "new");
    SetRenameGuard(nullptr);
}

TEST_F(RenameFile, GuardKeepsARenameFromBeingMade) {
    WriteText(m_from, "new");
    WriteText(m_to, "old");
    struct No {};
    SetRenameGuard([](const ZETRename&) { throw No(); });
    EXPECT_THROW(Rename(), No);
    EXPECT_THAT(m_directory.Names(), ElementsAre("from", "to"));
    EXPECT_EQ(ReadText(m_to), "old");
    SetRenameGuard(nullptr);
    Rename();
    EXPECT_EQ(ReadText(m_to), "new");
}

}  // namespace
}  // namespace ZET::Test
