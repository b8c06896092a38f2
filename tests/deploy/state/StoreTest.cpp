#include "deploy/state/store/Store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "deploy/host/Failure.h"
#include "deploy/state/store/StoreFile.h"

namespace ZET::Deploy {
namespace {

namespace fs = std::filesystem;

std::string Bytes(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

RecordedState State(mode_t mode = 0644) {
    RecordedState state;
    state.exists = true;
    state.mode = mode;
    state.owner = 12;
    state.group = 34;
    state.attributes = {{"user.x", std::string("a\0b", 3)}, {"user.y", ""}};
    state.knowledge.roles = {Role::Client, Role::Server};
    state.knowledge.namedRole = Role::Server;
    state.knowledge.templateName = "x.conf";
    return state;
}

FileToRecord File(const std::string& path, const std::string& before, const std::string& after) {
    FileToRecord file;
    file.file.path = path;
    file.file.kind = FileKind::Target;
    file.file.before = file.file.after = State();
    file.textBefore = before;
    file.textAfter = after;
    return file;
}

RecordedEntry Entry(const std::vector<std::string>& words = {"param", "set"}) {
    RecordedEntry entry;
    entry.user = 1000;
    entry.loginUser = 1001;
    entry.sudoUser = "anna";
    entry.role = Role::Server;
    entry.words = words;
    entry.message = "because";
    return entry;
}

/// One entry that is done with.
std::int64_t Record(Store& store, const std::vector<FileToRecord>& files) {
    const std::int64_t number = store.Open(Entry(), files);
    store.Close(number, EntryOutcome::Done);
    return number;
}

class StoreTest : public testing::Test {
  protected:
    StoreTest() {
        std::string name = testing::TempDir() + "zet-store.XXXXXX";
        m_directory = fs::canonical(mkdtemp(name.data()));
    }
    ~StoreTest() override { fs::remove_all(m_directory); }

    std::string Name(const std::string& suffix = "") const {
        return (m_directory / "state.db").string() + suffix;
    }

    Store Opened(const StoreLimits& limits = {}) const {
        return Store(Name(), Store::Access::Record, limits, false);
    }

    fs::path m_directory;
};

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
    store.Forget({"/etc/x"});
    EXPECT_FALSE(store.Known("/etc/x"));
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
    store.Close(number, EntryOutcome::Done, {{File("/etc/x", "1", "became")}, {}, {}});
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

TEST_F(StoreTest, FilesThatStayedAsTheyWereLeaveTheEntry) {
    Store store = Opened();
    const std::int64_t number = store.Open(Entry(), {File("/etc/x", "1", "2"), File("/etc/y", "1", "2")});
    store.Close(number, EntryOutcome::Failed, {{}, {"/etc/y"}, {}});
    ASSERT_EQ(store.FilesOf(number).size(), 1u);
    EXPECT_EQ(store.FilesOf(number)[0].path, "/etc/x");
    EXPECT_FALSE(store.Known("/etc/y"));
    EXPECT_EQ(store.Find(number)->outcome, EntryOutcome::Failed);
    const std::int64_t nothing = store.Open(Entry(), {File("/etc/y", "1", "2")});
    store.Close(nothing, EntryOutcome::Failed, {{}, {"/etc/y"}, {}});
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

TEST_F(StoreTest, AnEntryThatChangedNothingLeavesNothing) {
    Store store = Opened();
    const std::int64_t dropped = store.Open(Entry(), {File("/etc/x", "1", "2")});
    store.Drop(dropped);
    EXPECT_FALSE(store.Find(dropped));
    EXPECT_TRUE(store.FilesOf(dropped).empty());
    EXPECT_GT(Record(store, {File("/etc/x", "1", "2")}), dropped);  // a number is given once
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

TEST_F(StoreTest, OthersMayNotReadIt) {
    umask(0);
    Store store = Opened();
    Record(store, {File("/etc/x", "1", "2")});
    for (const char* const suffix : {"", "-wal", "-shm"}) {
        struct stat status = {};
        ASSERT_EQ(stat(Name(suffix).c_str(), &status), 0) << suffix;
        EXPECT_EQ(status.st_mode & 07777, 0600u) << suffix;
    }
    umask(022);
}

TEST_F(StoreTest, WhatStandsInItsPlaceIsRefusedUnopened) {
    { Record(*std::make_unique<Store>(Name(), Store::Access::Record), {File("/etc/x", "1", "2")}); }
    for (const char* const suffix : kStoreSuffixes) {
        const std::string name = Name(suffix);
        const std::string aside = (m_directory / "aside").string();
        const bool isThere = fs::exists(name);
        if (isThere) fs::rename(name, aside);
        const auto expectRefusal = [&](const char* what) {
            for (const auto access : {Store::Access::Record, Store::Access::Look}) {
                try {
                    const Store store(Name(), access);
                    ADD_FAILURE() << what << " as " << name;
                } catch (const Damage& damage) {
                    EXPECT_THAT(damage.what(), testing::HasSubstr(name + ": is no regular file"));
                }
            }
            fs::remove(name);
        };
        ASSERT_EQ(mkfifo(name.c_str(), 0600), 0);
        expectRefusal("a FIFO");
        fs::create_symlink("/etc/passwd", name);
        expectRefusal("a link");
        fs::create_directory(name);
        expectRefusal("a directory");
        std::ofstream(name) << "x";
        ASSERT_EQ(link(name.c_str(), (m_directory / "second").c_str()), 0);
        expectRefusal("a file of two names");
        fs::remove(m_directory / "second");
        std::ofstream(name) << "x";
        if (chown(name.c_str(), 12345, 12345) == 0) expectRefusal("another user's file");
        fs::remove(name);
        if (isThere) fs::rename(aside, name);
    }
}

TEST_F(StoreTest, AnotherDatabaseAndANewerStoreAreRefused) {
    {
        Database other(((std::ofstream(Name()) << ""), Name()), Database::Access::Write);
        other.Run("CREATE TABLE t(x)");
    }
    EXPECT_THROW(Opened(), Damage);
    fs::remove(Name());
    { Opened(); }
    {
        Database newer(Name(), Database::Access::Write);
        newer.Run("PRAGMA user_version = 2");
    }
    try {
        Opened();
        ADD_FAILURE();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.what(), Name() +
                                      ": was written by a newer version of the product (use that one, or set "
                                      "ZET_HISTORY=no)");
    }
}

TEST_F(StoreTest, OnlyAnEmptyFileCountsAsNew) {
    std::ofstream(Name()) << "";
    EXPECT_EQ(FindStore(Name()), FoundStore::Blank);
    { Opened(); }
    fs::remove(Name() + "-wal");
    std::ofstream(Name()) << "no database at all";
    EXPECT_EQ(FindStore(Name()), FoundStore::Whole);
    EXPECT_THROW(Opened(), Damage);
    EXPECT_EQ(Bytes(Name()), "no database at all");
}

/// What a damaged store answers is an error, or right.
void ExpectNothingWrong(const std::string& name) {
    try {
        Store store(name, Store::Access::Record, {}, false);
        for (const RecordedEntry& entry : store.Entries(10)) {
            EXPECT_EQ(entry.words, Entry().words);
            for (const RecordedFile& file : store.FilesOf(entry.number)) {
                EXPECT_EQ(file.path, "/etc/x");
                EXPECT_EQ(file.before.mode, 0644u);
                EXPECT_EQ(file.before.attributes, State().attributes);
                if (file.before.text) {
                    EXPECT_EQ(store.Text(*file.before.text), "the former text\n");
                }
                if (file.after.text) {
                    EXPECT_EQ(store.Text(*file.after.text), "the new text\n");
                }
            }
        }
        if (const auto known = store.Known("/etc/x")) {
            EXPECT_EQ(store.Text(known->state.text.value()), "the new text\n");
        }
        Record(store, {File("/etc/x", "the former text\n", "the new text\n")});
    } catch (const Failure&) {
        // It says so.
    }
}

/// The number of entries; none when it is told that some are lost.
std::optional<std::size_t> CountOrLoss(const std::string& name, Store::Access access) {
    try {
        Store store(name, access, {}, false);
        if (store.Lost()) return std::nullopt;
        return store.Entries(10).size();
    } catch (const Damage&) {
        return std::nullopt;
    }
}

class DamagedStoreTest : public StoreTest {
  protected:
    DamagedStoreTest() {
        {
            Store store = Opened();
            Record(store, {File("/etc/x", "the former text\n", "the new text\n")});
        }
        for (const char* const suffix : {"", "-wal"})
            m_whole[suffix] = Bytes(Name(suffix));
    }

    void PutBack() {
        fs::remove(Name("-shm"));
        for (const auto& [suffix, bytes] : m_whole)
            std::ofstream(Name(suffix), std::ios::binary) << bytes;
    }

    std::map<std::string, std::string> m_whole;
};

TEST_F(DamagedStoreTest, FlippedBytesAreNeverBelieved) {
    for (const auto& [suffix, bytes] : m_whole) {
        for (std::size_t at = 0; at < bytes.size(); at += 101) {
            PutBack();
            std::string damaged = bytes;
            damaged[at] = static_cast<char>(damaged[at] ^ 0x10);
            std::ofstream(Name(suffix), std::ios::binary) << damaged;
            SCOPED_TRACE(suffix + " at " + std::to_string(at));
            ExpectNothingWrong(Name());
        }
    }
}

TEST_F(DamagedStoreTest, ACutFileIsNeverBelieved) {
    for (const auto& [suffix, bytes] : m_whole) {
        for (std::size_t length = 0; length < bytes.size(); length += 211) {
            PutBack();
            std::ofstream(Name(suffix), std::ios::binary) << bytes.substr(0, length);
            SCOPED_TRACE(suffix + " cut at " + std::to_string(length));
            ExpectNothingWrong(Name());
        }
    }
}

TEST_F(StoreTest, ItCanBeLookedAtWhereNothingCanBeWritten) {
    constexpr uid_t kUser = 12345;
    { Record(*std::make_unique<Store>(Name(), Store::Access::Record), {File("/etc/x", "1", "2")}); }
    fs::remove(Name("-shm"));
    {
        Database whole(Name(), Database::Access::Write);
        whole.Run("PRAGMA wal_checkpoint(TRUNCATE)");
    }
    fs::remove(Name("-shm"));
    fs::remove(Name("-wal"));
    if (geteuid() == 0) {
        ASSERT_EQ(chown(Name().c_str(), kUser, kUser), 0);
        ASSERT_EQ(chown(m_directory.c_str(), kUser, kUser), 0);
    }
    chmod(Name().c_str(), 0400);
    chmod(m_directory.c_str(), 0500);
    const uid_t self = geteuid();
    if (self == 0) {
        ASSERT_EQ(seteuid(kUser), 0);
    }
    {
        Store store(Name(), Store::Access::Look);
        EXPECT_TRUE(store.Known("/etc/x"));
    }
    if (self == 0) {
        ASSERT_EQ(seteuid(self), 0);
    }
    chmod(m_directory.c_str(), 0700);
}

TEST_F(DamagedStoreTest, AJournalWithABrokenByteLosesNothingWithoutAWord) {
    const std::string& journal = m_whole["-wal"];
    for (const auto access : {Store::Access::Look, Store::Access::Record}) {
        for (std::size_t at = 0; at < journal.size(); at += 211) {
            PutBack();
            std::string damaged = journal;
            damaged[at] = static_cast<char>(damaged[at] ^ 0x10);
            std::ofstream(Name("-wal"), std::ios::binary) << damaged;
            EXPECT_EQ(CountOrLoss(Name(), access).value_or(1), 1u) << at;
            PutBack();
            fs::resize_file(Name("-wal"), at);
            EXPECT_EQ(CountOrLoss(Name(), access).value_or(1), 1u) << "cut at " << at;
        }
    }
}

TEST_F(DamagedStoreTest, TheTablesAreNotInTheJournalAlone) {
    fs::remove(Name("-wal"));
    fs::remove(Name("-shm"));
    fs::remove(Name("-last"));
    EXPECT_EQ(Store(Name(), Store::Access::Look).Entries(1).size(), 0u);
}

TEST_F(DamagedStoreTest, OneThatIsEmptyOrGoneBesideItsJournalIsDamaged) {
    for (const bool isGone : {false, true}) {
        for (const bool hasLastNumber : {true, false}) {
            PutBack();
            if (isGone)
                fs::remove(Name());
            else
                fs::resize_file(Name(), 0);
            if (!hasLastNumber) fs::remove(Name("-last"));
            EXPECT_FALSE(CountOrLoss(Name(), Store::Access::Look));
            EXPECT_FALSE(CountOrLoss(Name(), Store::Access::Record));
            EXPECT_EQ(Bytes(Name("-wal")), m_whole["-wal"]);
        }
    }
}

TEST_F(DamagedStoreTest, OneThatIsMovedAwayAsAWholeBeginsAnew) {
    for (const char* const suffix : {"", "-wal", "-shm"})
        fs::remove(Name(suffix));
    EXPECT_EQ(CountOrLoss(Name(), Store::Access::Record), 0u);
    EXPECT_EQ(CountOrLoss(Name(), Store::Access::Look), 0u);
}

TEST_F(DamagedStoreTest, LostLastEntriesAreToldAndTheirNumbersNotGivenAgain) {
    const std::string journal = Bytes(Name("-wal"));
    {
        Store store = Opened();
        Record(store, {File("/etc/x", "1", "2")});
        EXPECT_EQ(Record(store, {File("/etc/x", "2", "3")}), 3);
    }
    fs::remove(Name("-shm"));
    std::ofstream(Name("-wal"), std::ios::binary) << journal;
    {
        const Store store(Name(), Store::Access::Look);
        ASSERT_TRUE(store.Lost());
        EXPECT_EQ(store.Lost()->first, 2);
        EXPECT_EQ(store.Lost()->last, 3);
    }
    Store store = Opened();
    store.GiveUpLost();
    EXPECT_EQ(store.LastPruned(), 3);
    EXPECT_EQ(Record(store, {File("/etc/x", "1", "2")}), 4);
    EXPECT_FALSE(Store(Name(), Store::Access::Look).Lost());
}

TEST_F(DamagedStoreTest, ABrokenLastNumberTellsNothing) {
    const std::string last = Bytes(Name("-last"));
    for (std::size_t at = 0; at < last.size(); ++at) {
        std::string damaged = last;
        damaged[at] = static_cast<char>(damaged[at] ^ 1);
        std::ofstream(Name("-last"), std::ios::binary) << damaged;
        EXPECT_EQ(CountOrLoss(Name(), Store::Access::Look), 1u) << at;
    }
}

TEST_F(StoreTest, OneThatIsBeingMadeIsBlank) {
    std::ofstream(Name()) << std::string(4096, 'x');
    std::ofstream(Name("-journal"), std::ios::binary)
        << std::string("\xd9\xd5\x05\xf9\x20\xa1\x63\xd7", 8) + std::string(504, '\0');
    EXPECT_EQ(FindStore(Name()), FoundStore::Blank);
    std::ofstream(Name("-journal"), std::ios::binary)
        << std::string("\xd9\xd5\x05\xf9\x20\xa1\x63\xd7", 8) + std::string(504, '\1');
    EXPECT_EQ(FindStore(Name()), FoundStore::Whole);
}

}  // namespace
}  // namespace ZET::Deploy
