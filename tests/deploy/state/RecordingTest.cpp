#include "deploy/state/Recording.h"

#include <malloc.h>

#include <cstddef>
#include <string>
#include <vector>

#include "../HostFixture.h"
#include "deploy/host/Failure.h"
#include "deploy/state/CapturedFile.h"
#include "deploy/state/Writes.h"

namespace ZET::Deploy {

namespace {

class RecordingTest : public HostFixture {
  protected:
    void UseHistory(const std::string& history) const {
        Write("zet.conf", "ZET_HISTORY=" + history + "\n" + Directories());
    }

    /// Of a file that is going to be written, and keeps its original.
    ExpectedFile Expected(const std::string& name) const {
        ExpectedFile file;
        file.path = At(name);
        file.kind = FileKind::Target;
        file.companions = ExpectedFile::Companions::MayCome;
        file.after = CapturedFile();
        file.after->SetText("new");
        file.after->state.exists = true;
        file.after->state.mode = 0644;
        file.knowledge.emplace().roles = {Role::Client};
        return file;
    }

    std::vector<RecordedFile> FilesOf(std::int64_t entry) {
        return TheHost().HostHistory().ToRecord().FilesOf(entry);
    }
};

TEST_F(RecordingTest, TextOfAReserveIsKnownBeforeItIsThere) {
    UseHistory("yes");
    Write("out/a", "former", 0640);
    Recording recording(TheHost(), Recording::Use::OfTheProduct, true);
    recording.Expect(Expected("out/a"));
    recording.Begin();
    const std::vector<RecordedFile> files = FilesOf(*recording.Number());
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(files[1].path, At("out/a.before_zet"));
    EXPECT_TRUE(HaveSameTextAndMode(files[1].after, files[0].before));
    EXPECT_EQ(files[1].after.text, files[0].before.text);
}

/// In a first commit, all of them together.
TEST_F(RecordingTest, TextOfAReserveIsInMemoryOnce) {
    constexpr std::size_t kSize = std::size_t{4} << 20;
    const auto memory = [] {
        const struct mallinfo2 used = mallinfo2();
        return used.uordblks + used.hblkhd;
    };
    UseHistory("yes");
    Write("out/a", std::string(kSize, 'a'));
    Recording recording(TheHost(), Recording::Use::OfTheProduct, true);
    const ExpectedFile file = Expected("out/a");
    const std::size_t before = memory();
    recording.Expect(file);
    EXPECT_LT(memory(), before + kSize * 3 / 2);
    recording.Begin();
    const std::vector<RecordedFile> files = FilesOf(*recording.Number());
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(files[1].after.text, files[0].before.text);
    EXPECT_TRUE(files[1].after.text.has_value());
}

/// Both an end that was foretold, and one that a failure of another file brings.
TEST_F(RecordingTest, WhatSomebodyHadWrittenStaysHisHoweverTheCommandEnds) {
    UseHistory("yes");
    for (const bool isComplete : {true, false}) {
        const std::string name = isComplete ? "out/a" : "out/b";
        Commit(name, Role::Client);
        const RecordedState left = TheHost().HostHistory().ToRecord().Known(At(name))->state;
        Write(name, "text of somebody");
        Recording recording(TheHost(), Recording::Use::OfTheProduct, true);
        ExpectedFile file = Expected(name);
        file.knownAs = left;
        recording.Expect(file);
        recording.Begin();
        EXPECT_TRUE(FilesOf(*recording.Number()).front().staysKnown);
        Write(name, "new");
        if (isComplete) recording.Complete();
    }
    for (const std::string name : {"out/a", "out/b"})
        EXPECT_EQ(TheHost().HostHistory().ToRecord().Known(At(name))->state.size, 4U) << name;
}

/// Another program may write a file right after the command did.
TEST_F(RecordingTest, WhatWasReplacedIsKeptHoweverTheCommandEnds) {
    UseHistory("yes");
    for (const Ending ending : {Ending::Done, Ending::DoneInPart, Ending::Unknown}) {
        const std::string name = "out/" + std::to_string(static_cast<int>(ending));
        Commit(name, Role::Client);
        const RecordedState left = TheHost().HostHistory().ToRecord().Known(At(name))->state;
        Write(name, "precious");
        std::int64_t entry = 0;
        {
            Recording recording(TheHost(), Recording::Use::OfTheProduct, true);
            ExpectedFile file = Expected(name);
            file.after = CapturedFile();
            recording.Expect(file);
            recording.Begin();
            entry = *recording.Number();
            IsAboutToWrite(At(name));
            Write(name, "of another program");
            if (ending != Ending::Unknown) recording.Complete(ending);
        }
        Store& store = TheHost().HostHistory().ToRecord();
        const auto change = store.ChangeIn(entry, At(name));
        ASSERT_TRUE(change && change->before.text) << name;
        EXPECT_EQ(store.Text(*change->before.text), "precious");
        EXPECT_EQ(store.Known(At(name))->state, left);
    }
}

/// Another program wrote it before the command came to do so.
TEST_F(RecordingTest, WhatTheCommandDidNotWriteIsUntouchedHoweverItEnds) {
    UseHistory("yes");
    for (const Ending ending : {Ending::DoneInPart, Ending::Unknown}) {
        Write("out/a", "former");
        std::int64_t entry = 0;
        {
            Recording recording(TheHost(), Recording::Use::OfTheProduct, true);
            for (const char* const name : {"out/a", "out/new"})
                recording.Expect(Expected(name));
            recording.Begin();
            entry = *recording.Number();
            for (const char* const name : {"out/a", "out/new"})
                Write(name, "of another program");
            if (ending != Ending::Unknown) recording.Complete(ending);
        }
        EXPECT_FALSE(TheHost().HostHistory().ToRecord().Find(entry));
        std::filesystem::remove(At("out/new"));
    }
}

TEST_F(RecordingTest, WhoGoesBackGoesOnWithoutAStoreThatCannotBeLookedAt) {
    UseHistory("yes");
    Write("out/a", "former");
    Recording recording(TheHost(), Recording::Use::OfTheProduct, true, Purpose::GoesBack);
    bool isDone = false;
    // No transaction begins in another one.
    const auto look = TheHost().HostHistory().ToRecord().Look();
    recording.ExpectTogether([&] {
        recording.Expect(Expected("out/a"));
        isDone = true;
    });
    EXPECT_TRUE(isDone);
    EXPECT_FALSE(recording.IsOn());
    EXPECT_EQ(m_told.warnings.size(), 1U);
}

TEST_F(RecordingTest, WhoDoesNotGoBackIsStoppedByAStoreThatCannotBeLookedAt) {
    UseHistory("yes");
    Recording recording(TheHost(), Recording::Use::OfTheProduct, true);
    const auto look = TheHost().HostHistory().ToRecord().Look();
    EXPECT_THROW(recording.ExpectTogether([] {}), Failure);
}

TEST_F(RecordingTest, ReserveIsRecordedAsItCame) {
    UseHistory("yes");
    Write("out/a", "former", 0640);
    Recording recording(TheHost(), Recording::Use::OfTheProduct, true);
    recording.Expect(Expected("out/a"));
    recording.Begin();
    Write("out/a", "new");
    Write("out/a.before_zet", "former", 0600);
    recording.Complete();
    const std::vector<RecordedFile> files = FilesOf(*recording.Number());
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(files[1].after.mode, 0600U);
    EXPECT_EQ(files[1].after.text, files[0].before.text);
}

TEST_F(RecordingTest, ReserveThatDidNotComeIsNotRecorded) {
    UseHistory("yes");
    Write("out/a", "former");
    Recording recording(TheHost(), Recording::Use::OfTheProduct, true);
    recording.Expect(Expected("out/a"));
    recording.Begin();
    Write("out/a", "new");
    recording.Complete();
    EXPECT_EQ(FilesOf(*recording.Number()).size(), 1U);
}

TEST_F(RecordingTest, NoReserveIsExpectedOfAFileThatTheProductMade) {
    UseHistory("yes");
    Write("out/a", "former");
    Write("out/a.no_file_before_zet", "");
    Recording recording(TheHost(), Recording::Use::OfTheProduct, true);
    recording.Expect(Expected("out/a"));
    recording.Begin();
    EXPECT_EQ(FilesOf(*recording.Number()).size(), 1U);
}

/// A run that does not come to its end may have copied what somebody else wrote: it is the command's all the
/// same.
TEST_F(RecordingTest, ReserveOfAnotherTextIsRecordedAsItIs) {
    UseHistory("yes");
    Write("out/a", "former");
    std::int64_t entry = 0;
    {
        Recording recording(TheHost(), Recording::Use::OfTheProduct, true);
        recording.Expect(Expected("out/a"));
        recording.Begin();
        entry = *recording.Number();
        Write("out/a", "new");
        Write("out/a.before_zet", "theirs");
    }
    const std::vector<RecordedFile> files = FilesOf(entry);
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(files[1].after.digest, Capture(At("out/a.before_zet"), 100).state.digest);
}

TEST_F(RecordingTest, WhereNoTextsAreKeptNoCompanionIsRecorded) {
    UseHistory("no");
    Write("out/a", "former");
    Recording recording(TheHost(), Recording::Use::OfTheProduct, true);
    recording.Expect(Expected("out/a"));
    recording.Begin();
    EXPECT_EQ(FilesOf(*recording.Number()).size(), 1U);
}

}  // namespace

}  // namespace ZET::Deploy
