#include "StoreFixture.h"
#include "deploy/host/Failure.h"
#include "deploy/state/store/PlainFrame.h"

namespace ZET::Deploy {
namespace {

class KeptTextsTest : public StoreFixture {
  protected:
    static std::string Long(char first) { return first + std::string(2 * kLongestPlainText, 'x'); }

    std::int64_t Count(const char* statement) const {
        Database database(Name(), Database::Access::Write);
        return std::get<std::int64_t>(database.Run(statement));
    }

    void Change(const std::vector<const char*>& statements) const {
        Database database(Name(), Database::Access::Write);
        for (const char* const statement : statements)
            database.Run(statement);
    }

    /// As if somebody had made texts that have one digest.
    void GiveAllOneDigest(const std::string& digest) const {
        Database database(Name(), Database::Access::Write);
        database.Run("UPDATE texts SET digest = ?", {Blob{digest}});
    }

    /// The tables as they were before texts had marks.
    void GoBackToVersion1() const {
        Change({"DROP INDEX texts_by_digest", "ALTER TABLE texts DROP COLUMN mark",
                "CREATE INDEX texts_by_digest ON texts(digest)", "DROP TABLE secret",
                "PRAGMA user_version = 1"});
    }
};

TEST_F(KeptTextsTest, ATextOfTheSameSizeAndDigestIsNotTakenForAnother) {
    for (const bool isLong : {false, true}) {
        const auto text = [&](char first) { return isLong ? Long(first) : std::string(1, first); };
        Store store = Opened();
        Record(store, {File("/etc/x", text('a'), text('b'))});
        FileToRecord forged = File("/etc/x", text('b'), text('c'));
        forged.file.before.digest = forged.file.after.digest = std::string(16, 'd');
        forged.file.before.size = forged.file.after.size = text('c').size();
        GiveAllOneDigest(forged.file.after.digest);
        const std::int64_t number = Record(store, {forged});
        const RecordedFile file = store.FilesOf(number)[0];
        EXPECT_EQ(store.Text(file.before.text.value()), text('b'));
        EXPECT_EQ(store.Text(file.after.text.value()), text('c'));
        EXPECT_EQ(file.before.text, store.FilesOf(number - 1)[0].after.text);
    }
}

TEST_F(KeptTextsTest, LongTextsThatAreKeptNeedNotBeExpanded) {
    Store store = Opened();
    const std::int64_t first = Record(store, {File("/etc/x", Long('a'), Long('b'))});
    Change({"UPDATE texts SET frame = x'00'"});
    const std::int64_t second = Record(store, {File("/etc/x", Long('b'), Long('a'))});
    EXPECT_EQ(store.FilesOf(first)[0].before.text, store.FilesOf(second)[0].after.text);
    EXPECT_THROW(store.Text(store.FilesOf(second)[0].after.text.value()), Damage);
}

TEST_F(KeptTextsTest, EachStoreHasAKeyOfItsOwn) {
    const auto mark = [&] {
        {
            Store store = Opened();
            Record(store, {File("/etc/x", Long('a'), "1")});
        }
        return Count("SELECT mark FROM texts WHERE mark IS NOT NULL");
    };
    const std::int64_t first = mark();
    for (const char* const suffix : {"", "-wal", "-shm", "-last"})
        fs::remove(Name(suffix));
    EXPECT_NE(mark(), first);
}

TEST_F(KeptTextsTest, AStoreWithoutMarksIsReadAndGoesOn) {
    {
        Store store = Opened();
        Record(store, {File("/etc/x", Long('a'), "1")});
    }
    GoBackToVersion1();
    {
        Store store(Name(), Store::Access::Look);
        EXPECT_EQ(store.Text(store.FilesOf(1)[0].before.text.value()), Long('a'));
    }
    EXPECT_EQ(Count("PRAGMA user_version"), 1);
    Store store = Opened();
    EXPECT_EQ(Count("PRAGMA user_version"), 2);
    const std::int64_t second = Record(store, {File("/etc/x", Long('a'), Long('b'))});
    EXPECT_EQ(store.FilesOf(second)[0].before.text, store.FilesOf(1)[0].before.text);
    const std::int64_t third = Record(store, {File("/etc/x", Long('b'), Long('a'))});
    EXPECT_EQ(store.FilesOf(third)[0].before.text, store.FilesOf(second)[0].after.text);
    EXPECT_EQ(store.FilesOf(third)[0].after.text, store.FilesOf(1)[0].before.text);
}

}  // namespace
}  // namespace ZET::Deploy
