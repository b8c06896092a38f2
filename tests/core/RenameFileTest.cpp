#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>

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

    std::string ReplacedMeanwhile() {
        return "Failed to rename file '" + m_from + "' to '" + m_to +
               "': the former was replaced at the same time.";
    }

    /// What an ordinary user calls to rename a file of his with this mode; root's test only.
    std::string CallsOfOrdinaryUser(mode_t mode) {
        if (!IsRoot()) return "fsync from\nrename from to\nfsync sync \nrename from to\nfsync ";
        WriteText(m_from, "new", mode);
        EXPECT_EQ(::chown(m_from.c_str(), kSomeUser, kSomeGroup), 0);
        EXPECT_EQ(::chown(m_directory.Path().c_str(), kSomeUser, kSomeGroup), 0);
        const std::string list = m_directory.Path() + ".calls";
        WriteText(list, "", 0666);
        EXPECT_EXIT(
            {
                BecomeSomeUser();
                SystemCalls calls;
                Rename();
                std::ofstream stream(list);
                for (const std::string& call : calls.Calls({"fsync", "sync", "rename"}))
                    stream << call << "\n";
                stream.close();
                std::_Exit(0);
            },
            testing::ExitedWithCode(0), "");
        const std::string text = ReadText(list);
        ::unlink(list.c_str());
        return text;
    }

    /// Puts a file of other bytes and mode in place of `path`, as one who may write the directory can.
    void Swap(const std::string& path) {
        WriteText(m_directory / "other", "evil", 0640);
        ASSERT_EQ(::rename((m_directory / "other").c_str(), path.c_str()), 0);
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

TEST_F(RenameFile, FileThatMayOnlyBeWrittenIsSyncedItself) {
    const auto calls = CallsOfOrdinaryUser(0200);
    EXPECT_THAT(calls, testing::HasSubstr("fsync from\nrename from to\nfsync "));
}

TEST_F(RenameFile, FileThatMayNotBeOpenedIsSyncedWithEverythingElse) {
    EXPECT_THAT(CallsOfOrdinaryUser(0), testing::HasSubstr("sync \nrename from to\nfsync "));
}

TEST_F(RenameFile, FileThatCannotBeOpenedIsAnErrorBeforeTheRename) {
    WriteText(m_from, "new");
    for (const int turn : {1, 2}) {
        SystemCalls calls;
        calls.Fail("open", EMFILE, turn);
        EXPECT_THAT(Refusal(), testing::EndsWith("': Too many open files.")) << turn;
        EXPECT_EQ(calls.Count("rename"), 0) << turn;
    }
}

TEST_F(RenameFile, NoDescriptorIsLeftOpen) {
    const auto isOpen = [](int number) { return ::fcntl(number, F_GETFD) >= 0; };
    std::vector<int> before, after;
    for (int i = 0; i < 100; i++)
        if (isOpen(i)) before.push_back(i);
    WriteText(m_from, "new");
    Rename();
    Refusal();
    WriteText(m_to + ".tmp", "new", 0604);
    ZET::RenameFile(m_to + ".tmp", m_to);
    ASSERT_EQ(::mkfifo(m_from.c_str(), 0600), 0);
    Rename();
    for (int i = 0; i < 100; i++)
        if (isOpen(i)) after.push_back(i);
    EXPECT_EQ(after, before);
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

TEST_F(RenameFile, GuardReadsTheFileThatGetsTheNameFromItsStart) {
    WriteText(m_from, "new");
    std::string seen;
    SetRenameGuard([&](const ZETRename& rename) {
        Swap(rename.from);
        char bytes[16];
        const ssize_t size = ::read(rename.descriptor, bytes, sizeof bytes);
        seen.assign(bytes, static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    });
    EXPECT_EQ(Refusal(), ReplacedMeanwhile());
    SetRenameGuard(nullptr);
    EXPECT_EQ(seen, "new");
}

TEST_F(RenameFile, GuardGetsNoDescriptorOfWhatIsNoRegularFile) {
    int seen = 0;
    SetRenameGuard([&](const ZETRename& rename) { seen = rename.descriptor; });
    ASSERT_EQ(::symlink("nowhere", m_from.c_str()), 0);
    Rename();
    EXPECT_EQ(seen, -1);
    ASSERT_EQ(::mkfifo(m_from.c_str(), 0600), 0);
    seen = 0;
    Rename();
    EXPECT_EQ(seen, -1);
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

TEST_F(RenameFile, WhatIsPutInPlaceMeanwhileGetsNeitherNameNorMode) {
    for (const char* call : {"fsync", "lstat"}) {
        for (const std::string& from : {m_from, m_to + ".tmp"}) {
            WriteText(from, "new", 0604);
            WriteText(m_to, "old", 0600);
            SystemCalls calls;
            calls.Before(call, [&] { Swap(from); });
            EXPECT_THAT(MessageOf<EZETError>([&] { ZET::RenameFile(from, m_to); }),
                        testing::EndsWith("': the former was replaced at the same time."))
                << call;
            EXPECT_EQ(calls.Count("rename"), 1) << "only the swap";
            EXPECT_EQ(ReadText(m_to), "old");
            EXPECT_EQ(ModeOf(m_to), 0600U);
            EXPECT_EQ(ReadText(from), "evil");
            EXPECT_EQ(ModeOf(from), 0640U);
        }
    }
}

TEST_F(RenameFile, NameThatIsTakenAwayMeanwhileIsAnError) {
    WriteText(m_from, "new");
    SetRenameGuard([&](const ZETRename& rename) { ::unlink(rename.from.c_str()); });
    EXPECT_EQ(Refusal(),
              "Failed to rename file '" + m_from + "' to '" + m_to + "': No such file or directory.");
    SetRenameGuard(nullptr);
}

TEST_F(RenameFile, NewTextIsARegularFileWithOneName) {
    const std::string text = m_to + ".tmp";
    const std::string refusal = "Failed to rename file '" + text + "' to '" + m_to +
                                "': not a regular file with one name (remove the former).";
    WriteText(m_to, "old");
    WriteText(m_directory / "precious", "precious", 0640);
    const std::vector<std::function<int()>> kinds = {
        [&] { return ::link((m_directory / "precious").c_str(), text.c_str()); },
        [&] { return ::symlink("precious", text.c_str()); },
        [&] { return ::mkfifo(text.c_str(), 0600); },
        [&] { return ::mkdir(text.c_str(), 0700); },
    };
    for (const auto& make : kinds) {
        ASSERT_EQ(make(), 0);
        SetRenameGuard([](const ZETRename&) { ADD_FAILURE() << "there is nothing to judge"; });
        EXPECT_EQ(MessageOf<EZETError>([&] { ZET::RenameFile(text, m_to); }), refusal);
        SetRenameGuard(nullptr);
        EXPECT_EQ(ReadText(m_to), "old");
        EXPECT_EQ(ModeOf(m_directory / "precious"), 0640U);
        ASSERT_EQ(::remove(text.c_str()), 0);
    }
}

}  // namespace
}  // namespace ZET::Test
