#include "StoreFixture.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "deploy/host/Failure.h"
#include "deploy/state/store/StoreFile.h"
#include "deploy/state/store/StoreNames.h"

namespace ZET::Deploy {
namespace {

/// The file itself: who may read it, what stands in its place, damage.
class StoreFileTest : public StoreFixture {};

TEST_F(StoreFileTest, OthersMayNotReadIt) {
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

TEST_F(StoreFileTest, WhatStandsInItsPlaceIsRefusedUnopened) {
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

TEST_F(StoreFileTest, WhatOthersMayReadIsNotForThemOnceSomethingIsRecorded) {
    { Record(*std::make_unique<Store>(Name(), Store::Access::Record), {File("/etc/x", "1", "2")}); }
    for (const char* const suffix : {"", "-wal"}) {
        for (const unsigned int mode : {0644U, 0640U, 0604U}) {
            const std::string name = Name(suffix);
            fs::permissions(name, fs::perms(mode));
            { const Store look(Name(), Store::Access::Look); }
            EXPECT_EQ(fs::status(name).permissions(), fs::perms(mode)) << name;
            EXPECT_TRUE(FindStore(Name()).isForOthers) << name;
            { const Store store(Name(), Store::Access::Record); }
            EXPECT_EQ(fs::status(name).permissions(), fs::perms(0600)) << name;
            EXPECT_FALSE(FindStore(Name()).isForOthers) << name;
        }
    }
}

TEST_F(StoreFileTest, WhatHoldsNoTextIsNobodysConcern) {
    { Record(*std::make_unique<Store>(Name(), Store::Access::Record), {File("/etc/x", "1", "2")}); }
    for (const char* const suffix : {"-shm", "-last"}) {
        fs::permissions(Name(suffix), fs::perms(0644));
        EXPECT_FALSE(FindStore(Name()).isForOthers) << suffix;
    }
}

TEST_F(StoreFileTest, AnEmptyOneThatOthersMayReadIsNotForThemOnceItIsMade) {
    std::ofstream(Name()) << "";
    fs::permissions(Name(), fs::perms(0644));
    Store store = Opened();
    Record(store, {File("/etc/x", "1", "2")});
    for (const char* const suffix : {"", "-wal", "-shm"})
        EXPECT_EQ(fs::status(Name(suffix)).permissions(), fs::perms(0600)) << suffix;
}

TEST_F(StoreFileTest, WhatOthersMayWriteIsRefusedUnopened) {
    { Record(*std::make_unique<Store>(Name(), Store::Access::Record), {File("/etc/x", "1", "2")}); }
    for (const char* const suffix : {"", "-wal", "-shm", "-last"}) {
        const std::string name = Name(suffix);
        fs::permissions(name, fs::perms(0602));
        for (const auto access : {Store::Access::Record, Store::Access::Look}) {
            try {
                const Store store(Name(), access);
                ADD_FAILURE() << name;
            } catch (const Damage& damage) {
                EXPECT_THAT(damage.what(), testing::StartsWith(name + ": others may write it"));
            }
        }
        EXPECT_EQ(fs::status(name).permissions(), fs::perms(0602)) << name;
        fs::permissions(name, fs::perms(0600));
    }
}

TEST_F(StoreFileTest, AnotherDatabaseAndANewerStoreAreRefused) {
    {
        Database other(((std::ofstream(Name()) << ""), Name()), Database::Access::Write);
        other.Run("CREATE TABLE t(x)");
    }
    EXPECT_THROW(Opened(), Damage);
    fs::remove(Name());
    { Opened(); }
    {
        Database newer(Name(), Database::Access::Write);
        newer.Run("PRAGMA user_version = 99");
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

TEST_F(StoreFileTest, OnlyAnEmptyFileCountsAsNew) {
    std::ofstream(Name()) << "";
    EXPECT_EQ(FindStore(Name()), FoundStore::Blank);
    { Opened(); }
    fs::remove(Name() + "-wal");
    std::ofstream(Name()) << "no database at all";
    EXPECT_EQ(FindStore(Name()), FoundStore::Whole);
    EXPECT_THROW(Opened(), Damage);
    EXPECT_EQ(Bytes(Name()), "no database at all");
}

/// From one damaged byte to the next: a prime, unless the variable ZET_EVERY_BYTE is set, which takes
/// minutes.
std::size_t Step() {
    return std::getenv("ZET_EVERY_BYTE") != nullptr ? 1 : 211;
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

class DamagedStoreTest : public StoreFileTest {
  protected:
    DamagedStoreTest() {
        {
            Store store = WithJournal();
            Record(store, {File("/etc/x", "the former text\n", "the new text\n")});
        }
        for (const char* const suffix : {"", "-wal"})
            m_whole[suffix] = Bytes(Name(suffix));
    }

    /// One that is synced leaves what is recorded in its journal.
    Store WithJournal() const { return Store(Name(), Store::Access::Record); }

    void PutBack() {
        fs::remove(Name("-shm"));
        for (const auto& [suffix, bytes] : m_whole)
            std::ofstream(Name(suffix), std::ios::binary) << bytes;
    }

    std::map<std::string, std::string> m_whole;
};

TEST_F(DamagedStoreTest, FlippedBytesAreNeverBelieved) {
    for (const auto& [suffix, bytes] : m_whole) {
        for (std::size_t at = 0; at < bytes.size(); at += Step()) {
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
        for (std::size_t length = 0; length < bytes.size(); length += Step()) {
            PutBack();
            std::ofstream(Name(suffix), std::ios::binary) << bytes.substr(0, length);
            SCOPED_TRACE(suffix + " cut at " + std::to_string(length));
            ExpectNothingWrong(Name());
        }
    }
}

/// A user who may read the store, but write nothing beside it, while the object lives.
class Reader {
  public:
    explicit Reader(const fs::path& directory) : m_directory(directory), m_self(geteuid()) {
        for (const auto& entry : fs::directory_iterator(directory)) {
            GiveTo(entry.path());
            chmod(entry.path().c_str(), 0400);
        }
        GiveTo(directory);
        chmod(directory.c_str(), 0500);
        if (m_self == 0) {
            EXPECT_EQ(seteuid(kUser), 0);
        }
    }
    ~Reader() {
        if (m_self == 0) {
            EXPECT_EQ(seteuid(m_self), 0);
        }
        chmod(m_directory.c_str(), 0700);
    }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

  private:
    static constexpr uid_t kUser = 12345;

    void GiveTo(const fs::path& path) const {
        if (m_self == 0) {
            EXPECT_EQ(chown(path.c_str(), kUser, kUser), 0);
        }
    }

    fs::path m_directory;
    uid_t m_self;
};

TEST_F(StoreFileTest, ItCanBeLookedAtWhereNothingCanBeWritten) {
    for (const bool hasJournal : {true, false}) {
        { Record(*std::make_unique<Store>(Name(), Store::Access::Record), {File("/etc/x", "1", "2")}); }
        {
            Database whole(Name(), Database::Access::Write);
            whole.Run("PRAGMA wal_checkpoint(TRUNCATE)");
        }
        fs::remove(Name("-shm"));
        if (!hasJournal) fs::remove(Name("-wal"));
        {
            const Reader reader(m_directory);
            Store store(Name(), Store::Access::Look);
            EXPECT_TRUE(store.Known("/etc/x")) << hasJournal;
        }
        for (const char* const suffix : kStoreSuffixes)
            fs::remove(Name(suffix));
    }
}

TEST_F(StoreFileTest, WhatItsJournalHasIsNotLeftOutWhereNothingCanBeWritten) {
    { Record(*std::make_unique<Store>(Name(), Store::Access::Record), {File("/etc/x", "1", "2")}); }
    ASSERT_GT(fs::file_size(Name("-wal")), 0u);
    fs::remove(Name("-shm"));
    const Reader reader(m_directory);
    try {
        Store store(Name(), Store::Access::Look);
        ADD_FAILURE();
    } catch (const Damage& damage) {
        ADD_FAILURE() << damage.what();
    } catch (const Failure& failure) {
        EXPECT_THAT(failure.what(), testing::StartsWith(Name() + ": cannot be read here: its journal needs a "
                                                                 "writable directory (copy it"));
    }
}

TEST_F(DamagedStoreTest, AJournalWithABrokenByteLosesNothingWithoutAWord) {
    const std::string& journal = m_whole["-wal"];
    for (const auto access : {Store::Access::Look, Store::Access::Record}) {
        for (std::size_t at = 0; at < journal.size(); at += Step()) {
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
        Store store = WithJournal();
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

TEST_F(StoreFileTest, OneThatIsBeingMadeIsBlank) {
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
