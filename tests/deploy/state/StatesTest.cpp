#include "KeptTextsFixture.h"

namespace ZET::Deploy {
namespace {

/// Whose the states of the store are.
class StatesTest : public KeptTextsFixture {
  protected:
    std::int64_t States() const { return Count("SELECT count(*) FROM states"); }

    void ExpectNobodysStateIsKept() const {
        EXPECT_EQ(
            Count("SELECT count(*) FROM states WHERE id NOT IN (SELECT before FROM files UNION ALL SELECT "
                  "after FROM files UNION ALL SELECT state FROM known UNION ALL SELECT left_before FROM "
                  "files WHERE left_before IS NOT NULL)"),
            0);
        EXPECT_EQ(Count("SELECT count(*) FROM known WHERE state NOT IN (SELECT id FROM states)"), 0);
        EXPECT_EQ(Count("SELECT count(*) FROM files WHERE after NOT IN (SELECT id FROM states)"), 0);
        EXPECT_EQ(
            Count("SELECT count(*) FROM texts WHERE id NOT IN (SELECT text FROM states WHERE text IS NOT "
                  "NULL UNION ALL SELECT base FROM states WHERE base IS NOT NULL)"),
            0);
    }
};

TEST_F(StatesTest, AFileIsKnownByTheStateOfItsEntry) {
    StoreLimits limits;
    limits.entries = 1;
    Store store = Opened(limits);
    Record(store, {File("/etc/x", "1", "2")});
    EXPECT_EQ(States(), 2);
    // The entry goes, and what is known of its other file stays.
    Record(store, {File("/etc/y", "3", "4")});
    EXPECT_EQ(States(), 2 + 1);
    EXPECT_EQ(store.Text(store.Known("/etc/x")->state.text.value()), "2");
    Record(store, {File("/etc/x", "5", "6")});
    EXPECT_EQ(States(), 2 + 1);
    EXPECT_EQ(store.Text(store.Known("/etc/x")->state.text.value()), "6");
    ExpectNobodysStateIsKept();
}

TEST_F(StatesTest, WhatIsKnownAnewLeavesTheEntryAsItWas) {
    Store store = Opened();
    const std::int64_t number = Record(store, {File("/etc/x", "1", "2")});
    for (const char* const text : {"3", "4"})
        store.Remember({File("/etc/x", "", text)});
    EXPECT_EQ(store.Text(store.FilesOf(number)[0].after.text.value()), "2");
    EXPECT_EQ(store.Text(store.Known("/etc/x")->state.text.value()), "4");
    EXPECT_EQ(States(), 3);
    Forget(store, "/etc/x");
    EXPECT_FALSE(store.Known("/etc/x"));
    EXPECT_EQ(States(), 2);
    ExpectNobodysStateIsKept();
}

TEST_F(StatesTest, AFileThatIsForgottenStaysInItsEntry) {
    Store store = Opened();
    const std::int64_t number = Record(store, {File("/etc/x", "1", "2")});
    Forget(store, "/etc/x");
    EXPECT_EQ(store.Text(store.FilesOf(number)[0].after.text.value()), "2");
    store.Drop(number);
    EXPECT_EQ(States(), 0);
}

TEST_F(StatesTest, OfNothingNoStateIsKept) {
    Store store = Opened();
    FileToRecord made = File("/etc/x", "", "2");
    made.file.before = {};
    const std::int64_t number = Record(store, {made});
    EXPECT_EQ(States(), 1);
    EXPECT_EQ(store.FilesOf(number)[0].before, RecordedState());
    FileToRecord gone = File("/etc/x", "2", "");
    gone.file.after = {};
    EXPECT_FALSE(store.FilesOf(Record(store, {gone}))[0].after.exists);
    EXPECT_EQ(store.Erase({"/etc/x"}).texts, 1U);
    EXPECT_EQ(store.FilesOf(number)[0].before, RecordedState());
    ExpectNobodysStateIsKept();
}

/// Of which each state belonged to one row.
TEST_F(StatesTest, AStoreOfFormerVersionsGoesOn) {
    for (const int version : {1, 2}) {
        {
            Store store = Opened();
            Record(store, {File("/etc/x", "1", "2"), File("/etc/y", "3", "4")});
            store.Remember({File("/etc/x", "", "2"), File("/etc/y", "", "4")});
            EXPECT_EQ(States(), 6);
        }
        if (version == 1)
            GoBackToVersion1();
        else
            Change({"PRAGMA user_version = 2"});
        {
            Store store(Name(), Store::Access::Look);
            EXPECT_EQ(store.Text(store.Known("/etc/x")->state.text.value()), "2");
        }
        EXPECT_EQ(Count("PRAGMA user_version"), version);
        Store store = Opened();
        EXPECT_EQ(Count("PRAGMA user_version"), 3);
        store.Remember({File("/etc/x", "", "5")});
        Record(store, {File("/etc/y", "4", "6")});
        EXPECT_EQ(store.Text(store.Known("/etc/x")->state.text.value()), "5");
        ExpectNobodysStateIsKept();
        for (const char* const suffix : {"", "-wal", "-shm", "-last"})
            fs::remove(Name(suffix));
    }
}

}  // namespace
}  // namespace ZET::Deploy
