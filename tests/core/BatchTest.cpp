#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <new>

#include "Support.h"
#include "SystemCalls.h"
#include "zet/ZETFiles.h"
#include "zet/ZETHost.h"

namespace ZET::Test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

/// How many allocations this thread is granted still; negative: all.
thread_local int granted = -1;

class Batch : public testing::Test {
  protected:
    void SetUp() override {
        for (const char* name : {"one", "two"})
            WriteText(m_directory / name, name, 0640);
    }

    void KeepBoth() {
        CopyFile(m_directory / "one", m_directory / "one.kept");
        CopyFile(m_directory / "two", m_directory / "two.kept");
    }

    TemporaryDirectory m_directory;
};

TEST_F(Batch, CopyHasItsNameOnlyAfterItIsDurable) {
    CZETBatch batch;
    SystemCalls calls;
    KeepBoth();
    EXPECT_EQ(calls.Count("fsync"), 0);
    EXPECT_FALSE(IsFileExist(m_directory / "one.kept"));
    calls.Before("rename", [&] { EXPECT_EQ(calls.Count("fsync"), 2); });
    batch.NameFiles();
    EXPECT_THAT(m_directory.Names(), UnorderedElementsAre("one", "one.kept", "two", "two.kept"));
    EXPECT_EQ(ReadText(m_directory / "two.kept"), "two");
    // The directory once for both.
    EXPECT_EQ(calls.Count("fsync"), 3);
}

TEST_F(Batch, TextIsDurableBeforeItsNameAndTheDirectoryAtTheEnd) {
    CZETBatch batch;
    batch.NameFiles();
    SystemCalls calls;
    calls.Before("rename", [&] { EXPECT_EQ(calls.Count("fsync"), 1); });
    RenameFile(m_directory / "one", m_directory / "three");
    RenameFile(m_directory / "two", m_directory / "four");
    RemoveFile(m_directory / "four");
    EXPECT_EQ(calls.Count("fsync"), 2);
    batch.Finish();
    EXPECT_EQ(calls.Count("fsync"), 3);
    batch.Finish();
    EXPECT_EQ(calls.Count("fsync"), 3);
}

TEST_F(Batch, NewEmptyFileIsThereAtOnceAndDurableWithTheOthers) {
    CZETBatch batch;
    SystemCalls calls;
    CreateFile(m_directory / "mark");
    EXPECT_TRUE(IsFileExist(m_directory / "mark"));
    EXPECT_EQ(calls.Count("fsync"), 0);
    batch.NameFiles();
    EXPECT_EQ(calls.Count("fsync"), 2);
    EXPECT_TRUE(IsFileExist(m_directory / "mark"));
}

TEST_F(Batch, WhatIsGivenUpLeavesNoCopy) {
    {
        const CZETBatch batch;
        KeepBoth();
        EXPECT_EQ(m_directory.Names().size(), 4U);
    }
    EXPECT_THAT(m_directory.Names(), UnorderedElementsAre("one", "two"));
    KeepBoth();
    EXPECT_EQ(ReadText(m_directory / "one.kept"), "one");
}

TEST_F(Batch, WhatIsGivenUpIsDurableAsFarAsItIsDone) {
    SystemCalls calls;
    {
        CZETBatch batch;
        batch.NameFiles();
        RemoveFile(m_directory / "one");
        EXPECT_EQ(calls.Count("fsync"), 0);
    }
    EXPECT_EQ(calls.Count("fsync"), 1);
}

TEST_F(Batch, CopyThatCannotBeSyncedGetsNoName) {
    SystemCalls calls;
    {
        CZETBatch batch;
        KeepBoth();
        calls.Fail("fsync", EIO);
        const std::string message = MessageOf<EZETError>([&] { batch.NameFiles(); });
        EXPECT_THAT(message,
                    HasSubstr("Failed to sync file '" + std::string(m_directory / "one.kept") + "'"));
    }
    EXPECT_THAT(m_directory.Names(), UnorderedElementsAre("one", "two"));
}

/// A host that works from within the directory tells the name that its reader knows.
TEST_F(Batch, MessagesNameTheFileAsItsReaderKnowsIt) {
    const std::filesystem::path former = std::filesystem::current_path();
    std::filesystem::current_path(std::string(m_directory / ""));
    SystemCalls calls;
    {
        CZETBatch batch;
        batch.SetSubject("/as/told/one");
        CopyFile("././one", "././one.kept");
        calls.Fail("fsync", EIO);
        EXPECT_THAT(MessageOf<EZETError>([&] { batch.NameFiles(); }), HasSubstr("'/as/told/one.kept'"));
    }
    std::filesystem::current_path(former);
}

TEST_F(Batch, NothingWaitsWhereNothingIsSynced) {
    const std::string config = m_directory / "zet.conf";
    WriteText(config, "ZET_SYNC=no\n");
    const CZETHost host(config);
    CZETBatch batch;
    SystemCalls calls;
    KeepBoth();
    EXPECT_TRUE(IsFileExist(m_directory / "one.kept"));
    batch.NameFiles();
    EXPECT_EQ(calls.Count("fsync"), 0);
}

TEST_F(Batch, ManyFilesAreEachSyncedOnce) {
    constexpr int kFiles = 100;
    CZETBatch batch;
    for (int i = 0; i < kFiles; ++i)
        CopyFile(m_directory / "one", m_directory / ("copy" + std::to_string(i)));
    SystemCalls calls;
    batch.NameFiles();
    EXPECT_EQ(calls.Count("fsync"), kFiles + 1);
    EXPECT_EQ(m_directory.Names().size(), 2U + kFiles);
}

/// Threads that were begun already are waited for.
TEST_F(Batch, NoMemoryThatIsMissingEndsTheProgram) {
    bool isDone = false;
    int refused = 0;
    for (int turn = 0; !isDone; ++turn) {
        CZETBatch batch;
        for (const char* name : {"a", "b", "c", "d"})
            CopyFile(m_directory / "one", m_directory / name);
        granted = turn;
        try {
            batch.NameFiles();
            isDone = granted >= 0;
        } catch (const std::bad_alloc&) {
            ++refused;
        }
        granted = -1;
    }
    EXPECT_GT(refused, 0);
    EXPECT_EQ(m_directory.Names().size(), 6U);
}

}  // namespace
}  // namespace ZET::Test

// The library's, too: the test program's own functions stand before those of the libraries.
// Not to be seen through: what is inlined of one alone looks like a mismatch to the compiler.
[[gnu::noinline]] void* operator new(std::size_t size) {
    if (ZET::Test::granted == 0) {
        ZET::Test::granted = -2;  // one is refused, and the next are granted
        throw std::bad_alloc();
    }
    if (ZET::Test::granted > 0) --ZET::Test::granted;
    if (void* const memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
