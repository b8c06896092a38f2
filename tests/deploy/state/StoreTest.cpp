#include "StoreFixture.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <atomic>
#include <stdexcept>
#include <thread>

#include "deploy/host/Failure.h"
#include "deploy/state/store/StoreFile.h"
#include "deploy/state/store/StoreNames.h"

namespace ZET::Deploy {
namespace {

class StoreTest : public StoreFixture {};

TEST_F(StoreTest, AnEntryComesBackAsItWasRecorded) {
    std::int64_t number = 0;
    {
        Store store = Opened();
        number = store.Open(Entry({"param", "set", std::string("a\nb")}), {File("/etc/x", "old\n", "new\n")});
        EXPECT_EQ(store.OpenEntries().size(), 1u);
        store.Close(number, EntryOutcome::Done);
    }
    Store store(Name(), Store::Access::Look);
    EXPECT_TRUE(store.OpenEntries().empty());
    const std::optional<RecordedEntry> entry = store.Find(number);
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->outcome, EntryOutcome::Done);
    EXPECT_GT(entry->begun, 0);
    EXPECT_GE(entry->ended, entry->begun);
    EXPECT_EQ(entry->user, 1000u);
    EXPECT_EQ(entry->loginUser, 1001u);
    EXPECT_EQ(entry->sudoUser, "anna");
    EXPECT_EQ(entry->role, Role::Server);
    EXPECT_THAT(entry->words, testing::ElementsAre("param", "set", "a\nb"));
    EXPECT_EQ(entry->message, "because");

    const std::vector<RecordedFile> files = store.FilesOf(number);
    ASSERT_EQ(files.size(), 1u);
    EXPECT_EQ(files[0].path, "/etc/x");
    EXPECT_EQ(files[0].kind, FileKind::Target);
    EXPECT_EQ(files[0].before.mode, 0644u);
    EXPECT_EQ(files[0].before.owner, 12u);
    EXPECT_EQ(files[0].before.group, 34u);
    EXPECT_EQ(files[0].before.attributes, State().attributes);
    EXPECT_EQ(files[0].before.size, 4u);
    EXPECT_THAT(files[0].before.knowledge.roles, testing::ElementsAre(Role::Server, Role::Client));
    EXPECT_EQ(files[0].before.knowledge.namedRole, Role::Server);
    EXPECT_EQ(files[0].before.knowledge.templateName, "x.conf");
    EXPECT_EQ(store.Text(files[0].before.text.value()), "old\n");
    EXPECT_EQ(store.Text(files[0].after.text.value()), "new\n");
}

TEST_F(StoreTest, AFileIsKnownAsTheLastEntryLeftIt) {
    Store store = Opened();
    EXPECT_FALSE(store.Known("/etc/x"));
    Record(store, {File("/etc/x", "1", "2")});
    const std::int64_t last = Record(store, {File("/etc/x", "2", "3"), File("/etc/a", "", "4")});
    const std::optional<KnownFile> known = store.Known("/etc/x");
    ASSERT_TRUE(known);
    EXPECT_EQ(known->entry, last);
    EXPECT_EQ(store.Text(known->state.text.value()), "3");
    ASSERT_EQ(store.KnownFiles().size(), 2u);
    EXPECT_EQ(store.KnownFiles()[0].path, "/etc/a");
    Forget(store, "/etc/x");
    EXPECT_FALSE(store.Known("/etc/x"));
}

TEST_F(StoreTest, WhatOthersDropDuringALookIsNoDamage) {
    Opened();
    std::atomic<bool> isOver = false;
    std::thread others([&] {
        Store store = Opened();
        for (int i = 0; i < 300; ++i)
            store.Drop(store.Open(Entry(), {File("/etc/x", "1", "2")}));
        isOver = true;
    });
    Store store(Name(), Store::Access::Look);
    std::string told;
    while (!isOver && told.empty()) {
        try {
            store.OpenEntries();
            store.Entries(10);
            store.EntriesOf("/etc/x");
        } catch (const Failure& failure) {
            told = failure.what();
        }
    }
    others.join();
    EXPECT_EQ(told, "");
}

TEST_F(StoreTest, AnOpenEntryIsNotKnownYet) {
    Store store = Opened();
    store.Open(Entry(), {File("/etc/x", "1", "2")});
    EXPECT_FALSE(store.Known("/etc/x"));
}

TEST_F(StoreTest, WhatTurnedOutOtherwiseReplacesWhatWasPlanned) {
    Store store = Opened();
    const std::int64_t number =
        store.Open(Entry(), {File("/etc/x", "1", "planned"), File("/etc/y", "1", "2")});
    store.Close(number, EntryOutcome::Done, {{File("/etc/x", "1", "became")}, {}, {}, {}});
    const std::vector<RecordedFile> files = store.FilesOf(number);
    EXPECT_EQ(store.Text(files[0].after.text.value()), "became");
    EXPECT_EQ(store.Text(files[0].before.text.value()), "1");
    EXPECT_EQ(store.Text(files[1].after.text.value()), "2");
    EXPECT_EQ(store.Text(store.Known("/etc/x")->state.text.value()), "became");
}

TEST_F(StoreTest, AnAnnouncedFileIsPlannedBeforeItIsWritten) {
    Store store = Opened();
    FileToRecord file = File("/etc/x", "1", "");
    file.isPlanned = false;
    const std::int64_t number = store.Announce(Entry(), {file});
    ASSERT_EQ(store.OpenEntries().size(), 1u);
    EXPECT_FALSE(store.FilesOf(number)[0].IsPlanned());
    store.Plan(number, {File("/etc/x", "1", "2")});
    EXPECT_TRUE(store.FilesOf(number)[0].IsPlanned());
    EXPECT_EQ(store.Text(store.FilesOf(number)[0].after.text.value()), "2");
}

TEST_F(StoreTest, AReserveGetsTheFormerTextOfItsOwnFile) {
    Store store = Opened();
    const std::int64_t number = store.Announce(Entry(), {File("/etc/x", "of x", "1")});
    FileToRecord file = File("/etc/y", "of y", "2");
    file.reserve = File("/etc/y.before_zet", "", "").file;
    file.reserve->before = {};
    store.Plan(number, {File("/etc/x", "of x", "3"), file, File("/etc/z", "of z", "4")});
    const std::vector<RecordedFile> files = store.FilesOf(number);
    ASSERT_EQ(files.size(), 4u);
    EXPECT_EQ(files[2].path, "/etc/y.before_zet");
    EXPECT_EQ(store.Text(files[2].after.text.value()), "of y");
}

TEST_F(StoreTest, FilesThatStayedAsTheyWereLeaveTheEntry) {
    Store store = Opened();
    const std::int64_t number = store.Open(Entry(), {File("/etc/x", "1", "2"), File("/etc/y", "1", "2")});
    store.Close(number, EntryOutcome::Failed, {{}, {"/etc/y"}, {}, {}});
    ASSERT_EQ(store.FilesOf(number).size(), 1u);
    EXPECT_EQ(store.FilesOf(number)[0].path, "/etc/x");
    EXPECT_FALSE(store.Known("/etc/y"));
    EXPECT_EQ(store.Find(number)->outcome, EntryOutcome::Failed);
    const std::int64_t nothing = store.Open(Entry(), {File("/etc/y", "1", "2")});
    store.Close(nothing, EntryOutcome::Failed, {{}, {"/etc/y"}, {}, {}});
    EXPECT_FALSE(store.Find(nothing));
}

TEST_F(StoreTest, WhatWasMergedKeepsWhatItWasMadeFrom) {
    Store store = Opened();
    FileToRecord file = File("/etc/x", "1", "merged");
    file.base = "rendered";
    const std::int64_t number = Record(store, {file});
    EXPECT_EQ(store.Text(store.FilesOf(number)[0].after.knowledge.base.value()), "rendered");
    EXPECT_FALSE(store.FilesOf(number)[0].before.knowledge.base);
}

TEST_F(StoreTest, EqualTextsAreKeptOnce) {
    Store store = Opened();
    const std::int64_t number =
        Record(store, {File("/etc/x", "same", "same"), File("/etc/y", "same", "other")});
    const std::vector<RecordedFile> files = store.FilesOf(number);
    EXPECT_EQ(files[0].before.text, files[0].after.text);
    EXPECT_EQ(files[0].before.text, files[1].before.text);
    EXPECT_NE(files[0].before.text, files[1].after.text);
}

TEST_F(StoreTest, ALargeTextIsRecordedWithoutItsBytes) {
    StoreLimits limits;
    limits.largestText = 3;
    Store store = Opened(limits);
    const std::int64_t number = Record(store, {File("/etc/x", "123", "1234")});
    EXPECT_TRUE(store.FilesOf(number)[0].before.text);
    EXPECT_FALSE(store.FilesOf(number)[0].after.text);
    EXPECT_EQ(store.FilesOf(number)[0].after.size, 4u);
    EXPECT_NE(store.FilesOf(number)[0].after.digest, store.FilesOf(number)[0].before.digest);
}

TEST_F(StoreTest, ATextThatIsKeptIsReadEvenIfOneOfItsSizeWouldNotBeKeptToday) {
    std::optional<TextNumber> kept;
    {
        Store store = Opened();
        kept = store.FilesOf(Record(store, {File("/etc/x", "123", "1234")}))[0].after.text;
    }
    StoreLimits limits;
    limits.largestText = 3;
    EXPECT_EQ(Opened(limits).Text(*kept), "1234");
}

TEST_F(StoreTest, AnEntryThatChangedNothingLeavesNothing) {
    Store store = Opened();
    const std::int64_t dropped = store.Open(Entry(), {File("/etc/x", "1", "2")});
    store.Drop(dropped);
    EXPECT_FALSE(store.Find(dropped));
    EXPECT_TRUE(store.FilesOf(dropped).empty());
    EXPECT_GT(Record(store, {File("/etc/x", "1", "2")}), dropped);  // a number is given once
}

TEST_F(StoreTest, TheVersionTellsWhetherAnotherOneRecorded) {
    Store store = Opened();
    Store reader(Name(), Store::Access::Look);
    const std::int64_t before = reader.Version();
    EXPECT_EQ(reader.Version(), before);
    Record(store, {File("/etc/x", "1", "2")});
    EXPECT_NE(reader.Version(), before);
}

std::int64_t CountIn(const std::string& file, Statement statement) {
    Database database(file, Database::Access::Look);
    return std::get<std::int64_t>(database.Run(statement));
}

TEST_F(StoreTest, WhatAnEntryLeftIsKnownAlsoWhereTheEntryIsNotKept) {
    Store store = Opened();
    Settlement settlement;
    settlement.keepsEntry = false;
    FileToRecord original = File("/etc/o", "5", "6");
    Record(store, {File("/etc/x", "0", "1"), original});
    original.file.kind = FileKind::Original;
    FileToRecord edited = File("/etc/x", "2", "3");
    edited.file.knownAsBefore = State(0600);
    const std::int64_t number = store.Open(Entry(), {edited, File("/etc/a", "", "4"), original});
    EXPECT_FALSE(store.Close(number, EntryOutcome::Done, settlement));
    EXPECT_FALSE(store.Find(number));
    EXPECT_TRUE(store.FilesOf(number).empty());

    const std::vector<KnownFile> known = store.KnownFiles();
    ASSERT_EQ(known.size(), 2u);
    EXPECT_EQ(known[0].path, "/etc/a");
    EXPECT_EQ(known[1].path, "/etc/x");
    EXPECT_EQ(known[1].entry, number);
    EXPECT_EQ(store.Text(known[0].state.text.value()), "4");
    EXPECT_EQ(store.Text(known[1].state.text.value()), "3");
    // Those of the entry before, with the two texts of each file, and those that are known.
    EXPECT_EQ(CountIn(Name(), "SELECT count(*) FROM states"), 4 + 2);
    EXPECT_EQ(CountIn(Name(), "SELECT count(*) FROM texts"), 4 + 2);
}

TEST_F(StoreTest, AnEntryThatLostAStateIsNotClosed) {
    Store store = Opened();
    const std::int64_t number = store.Open(Entry(), {File("/etc/x", "1", "2")});
    Database(Name(), Database::Access::Write).Run("DELETE FROM states WHERE id = (SELECT after FROM files)");
    Settlement settlement;
    for (const bool isKept : {false, true}) {
        settlement.keepsEntry = isKept;
        EXPECT_THROW(store.Close(number, EntryOutcome::Done, settlement), Failure);
        EXPECT_FALSE(store.Known("/etc/x"));
    }
}

TEST_F(StoreTest, WhatIsRememberedTogetherComesAsOne) {
    Store store = Opened();
    Record(store, {File("/etc/other", "1", "2")});
    store.RememberTogether([&] {
        store.Remember({File("/etc/x", "", "x")});
        store.Remember({File("/etc/y", "", "y")});
        EXPECT_TRUE(store.Known("/etc/x"));
        EXPECT_FALSE(Store(Name(), Store::Access::Look).Known("/etc/x"));
    });
    Store other(Name(), Store::Access::Look);
    EXPECT_TRUE(other.Known("/etc/x"));
    EXPECT_TRUE(other.Known("/etc/y"));
}

TEST_F(StoreTest, WhatWasRememberedTogetherBeforeAFailureStays) {
    Store store = Opened();
    const auto remember = [&] {
        store.Remember({File("/etc/x", "", "x")});
        throw std::runtime_error("a template cannot be read");
    };
    EXPECT_THROW(store.RememberTogether(remember), std::runtime_error);
    EXPECT_TRUE(Store(Name(), Store::Access::Look).Known("/etc/x"));
    store.Remember({File("/etc/y", "", "y")});
    EXPECT_TRUE(Store(Name(), Store::Access::Look).Known("/etc/y"));
}

TEST_F(StoreTest, EntriesAreListedFromTheNewest) {
    Store store = Opened();
    const std::int64_t first = Record(store, {File("/etc/x", "1", "2")});
    const std::int64_t second = Record(store, {File("/etc/y", "1", "2")});
    const std::int64_t third = Record(store, {File("/etc/x", "2", "3")});
    const auto numbers = [](const std::vector<RecordedEntry>& entries) {
        std::vector<std::int64_t> result;
        for (const RecordedEntry& entry : entries)
            result.push_back(entry.number);
        return result;
    };
    EXPECT_THAT(numbers(store.Entries(2)), testing::ElementsAre(third, second));
    EXPECT_THAT(numbers(store.Entries(9, second)), testing::ElementsAre(first));
    EXPECT_THAT(numbers(store.EntriesOf("/etc/x")), testing::ElementsAre(third, first));
}

TEST_F(StoreTest, ChangeOfOneFileIsFoundByItsEntryAndByTheLastOne) {
    Store store = Opened();
    const std::int64_t first = Record(store, {File("/etc/w", "", "w"), File("/etc/x", "1", "2")});
    const std::int64_t second = Record(store, {File("/etc/y", "1", "2")});
    const std::int64_t third = Record(store, {File("/etc/x", "2", "3")});
    const auto textAfter = [&](const std::optional<RecordedFile>& file) {
        return file ? store.Text(*file->after.text) : "none";
    };
    EXPECT_EQ(textAfter(store.ChangeIn(first, "/etc/x")), "2");
    EXPECT_EQ(textAfter(store.ChangeIn(second, "/etc/x")), "none") << "an older one is another entry's";
    EXPECT_EQ(textAfter(store.LastChangeOf("/etc/x", third)), "3");
    EXPECT_EQ(textAfter(store.LastChangeOf("/etc/x", second)), "2");
    EXPECT_EQ(textAfter(store.LastChangeOf("/etc/x", first - 1)), "none");
    EXPECT_EQ(textAfter(store.FirstChangeAfter("/etc/x", first - 1)), "2");
    EXPECT_EQ(textAfter(store.FirstChangeAfter("/etc/x", first)), "3");
    EXPECT_EQ(textAfter(store.FirstChangeAfter("/etc/x", third)), "none");
}

TEST_F(StoreTest, OldEntriesGoAndWhatIsKnownOfTheirFilesStays) {
    StoreLimits limits;
    limits.entries = 2;
    limits.entriesWithEdits = 1;
    Store store = Opened(limits);
    const std::int64_t old = Record(store, {File("/etc/old", "a", "b")});
    FileToRecord edited = File("/etc/x", "of a hand", "1");
    edited.file.wasEdited = true;
    const std::int64_t lost = Record(store, {edited});
    edited.textBefore = "of another hand";
    const std::int64_t kept = Record(store, {edited});
    Record(store, {File("/etc/x", "1", "2")});
    Record(store, {File("/etc/x", "2", "3")});
    EXPECT_FALSE(store.Find(old));
    EXPECT_FALSE(store.Find(lost));
    ASSERT_TRUE(store.Find(kept));
    EXPECT_EQ(store.Text(store.FilesOf(kept)[0].before.text.value()), "of another hand");
    EXPECT_EQ(store.Text(store.Known("/etc/old")->state.text.value()), "b");
}

TEST_F(StoreTest, OldEntriesThatReplacedEditsStayWhereThereAreFewOfThem) {
    StoreLimits limits;
    limits.entries = 2;
    limits.entriesWithEdits = 100;
    Store store = Opened(limits);
    FileToRecord edited = File("/etc/x", "of a hand", "1");
    edited.file.wasEdited = true;
    const std::int64_t kept = Record(store, {edited});
    const std::int64_t gone = Record(store, {File("/etc/x", "1", "2")});
    const std::int64_t newest = Record(store, {File("/etc/x", "2", "3")}) + 1;
    EXPECT_EQ(Record(store, {File("/etc/x", "3", "4")}), newest);
    EXPECT_TRUE(store.Find(kept));
    EXPECT_FALSE(store.Find(gone));
    EXPECT_TRUE(store.Find(newest - 1));
    EXPECT_EQ(store.LastPruned(), gone);
}

TEST_F(StoreTest, ErasedTextsAreInNoneOfItsFiles) {
    const std::string secret(4000, 'S');
    const std::string other = "this stays where it is\n";
    {
        Store store = Opened();
        Record(store,
               {File("/etc/secret", secret, "a password that nobody may see\n"), File("/etc/x", other, "2")});
        Record(store, {File("/etc/secret", "a password that nobody may see\n", "3")});
        const auto found = [&] {
            std::string all;
            for (const char* const suffix : kStoreSuffixes)
                all += Bytes(Name(suffix));
            return all.find("a password that nobody may see") != std::string::npos;
        };
        ASSERT_TRUE(found());  // or looking for it below would prove nothing
        EXPECT_EQ(store.Erase({"/etc/secret"}).texts, 3U);
        EXPECT_FALSE(found());
        EXPECT_EQ(store.Text(store.FilesOf(1)[1].before.text.value()), other);
        EXPECT_FALSE(store.FilesOf(1)[0].before.text);
        EXPECT_FALSE(store.FilesOf(2)[0].after.text);
        EXPECT_FALSE(store.Known("/etc/secret")->state.text);
    }
}

}  // namespace
}  // namespace ZET::Deploy
