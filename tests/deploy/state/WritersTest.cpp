#include "deploy/state/Writers.h"

#include <gtest/gtest.h>

#include <string>

#include "../HostFixture.h"
#include "deploy/state/CapturedFile.h"
#include "deploy/state/History.h"

namespace ZET::Deploy {
namespace {

class WritersTest : public HostFixture {
  protected:
    WritersTest() { Write("file.before_zet", "original"); }

    /// As an entry finds the file, and leaves it.
    void Change(const std::string& before, const std::string& after, mode_t modeBefore = 0644,
                bool isPutBack = false) {
        FileToRecord change;
        change.file.path = At("file");
        change.file.kind = FileKind::Edit;
        change.file.kindBefore = m_kindBefore;
        change.file.before = StateOf(before, modeBefore);
        change.file.after = StateOf(after, 0644);
        change.textBefore = before;
        change.textAfter = after;
        Store& store = TheHost().HostHistory().ToRecord();
        change.file.isPutBack = isPutBack;
        store.Close(store.Open({}, {change}), EntryOutcome::Done);
        m_kindBefore = FileKind::Edit;
    }

    /// An entry that put back what was there before.
    void GoBack(const std::string& before, const std::string& after) {
        m_kindBefore = before == "original" ? FileKind::Original : FileKind::Edit;
        Change(before, after, 0644, true);
    }

    Writers Since() {
        const std::optional<KnownFile> known = TheHost().HostHistory().ToLook()->Known(At("file"));
        return WritersSince(At("file.before_zet"), known.value(), TheHost());
    }

    FileKind m_kindBefore = FileKind::Original;

  private:
    static RecordedState StateOf(const std::string& text, mode_t mode) {
        CapturedFile file;
        file.state.exists = true;
        file.state.mode = mode;
        file.SetText(text);
        return file.state;
    }
};

TEST_F(WritersTest, EntriesOfWhichEachBeginsWithWhatTheLastLeftAreTheProductsAlone) {
    Change("original", "first");
    Change("first", "second");
    EXPECT_EQ(Since(), Writers::ProductAlone);
}

TEST_F(WritersTest, AnotherTextBetweenEntriesIsTheWorkOfOthers) {
    Change("original", "first");
    Change("first by hand", "second");
    Change("second", "third");
    EXPECT_EQ(Since(), Writers::OthersToo);
}

TEST_F(WritersTest, AnotherModeBetweenEntriesIsTheWorkOfOthers) {
    Change("original", "first");
    Change("first", "second", 0600);
    EXPECT_EQ(Since(), Writers::OthersToo);
}

TEST_F(WritersTest, AReserveOfEarlierTimesIsNotWhatTheFirstEntryFound) {
    Change("original by hand", "first");
    EXPECT_EQ(Since(), Writers::OthersToo);
}

TEST_F(WritersTest, AReserveThatWasMadeLaterIsWhatThatEntryFound) {
    Change("before any reserve", "original");
    Change("original", "second");
    EXPECT_EQ(Since(), Writers::ProductAlone);
}

TEST_F(WritersTest, WithoutTheFirstEntryNobodyCanTell) {
    m_kindBefore = FileKind::Edit;
    Change("what an entry left that is not kept", "second");
    EXPECT_EQ(Since(), Writers::NotKept);
}

TEST_F(WritersTest, AnUndoPutsBackTheWorkOfOthers) {
    Change("original", "first");
    Change("first by hand", "original");
    GoBack("original", "first by hand");
    EXPECT_EQ(Since(), Writers::OthersToo);
}

TEST_F(WritersTest, AnUndoPutsBackTheWorkOfTheProductAlone) {
    Change("original", "first");
    Change("first", "second");
    Change("second", "original");
    GoBack("original", "second");
    Change("second", "third");
    EXPECT_EQ(Since(), Writers::ProductAlone);
}

TEST_F(WritersTest, WhatAnUndoPutsBackIsUntoldWhereNothingBeforeItIsKept) {
    GoBack("original", "first");
    EXPECT_EQ(Since(), Writers::NotKept);
}

TEST_F(WritersTest, WhatIsKnownOfAFileByNoEntryIsTheWorkOfOthersOrUntold) {
    Commit("file", Role::Client);
    EXPECT_EQ(Since(), Writers::NotKept);
    Change("text", "text more");
    Commit("file", Role::Client);  // is known as "text" again
    EXPECT_EQ(Since(), Writers::OthersToo);
}

}  // namespace
}  // namespace ZET::Deploy
