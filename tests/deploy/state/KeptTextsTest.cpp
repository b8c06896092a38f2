#include "KeptTextsFixture.h"
#include "deploy/host/Failure.h"
#include "deploy/state/store/Compression.h"
#include "deploy/state/store/PlainFrame.h"
#include "deploy/state/store/SealedFrame.h"
#include "deploy/state/store/StoreFile.h"

namespace ZET::Deploy {
namespace {

class KeptTextsTest : public KeptTextsFixture {};

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
    for (const TextNumber text :
         {store.FilesOf(first)[0].before.text.value(), store.FilesOf(first)[0].after.text.value()})
        GiveFrame(text, SealedFrame("what cannot be expanded"));
    const std::int64_t second = Record(store, {File("/etc/x", Long('b'), Long('a'))});
    EXPECT_EQ(store.FilesOf(first)[0].before.text, store.FilesOf(second)[0].after.text);
    EXPECT_THROW(store.Text(store.FilesOf(second)[0].after.text.value()), Damage);
}

TEST_F(KeptTextsTest, ADamagedLongTextThatComesAgainIsKeptAnew) {
    for (const std::size_t place : {0U, 6U, 13U, 40U}) {
        Store store = Opened();
        const std::int64_t first = Record(store, {File("/etc/x", "1", Long('a'))});
        const TextNumber text = store.FilesOf(first)[0].after.text.value();
        DamageFrame(text, place);
        EXPECT_THROW(store.Text(text), Damage) << place;
        const std::int64_t second = Record(store, {File("/etc/x", Long('a'), "2")});
        EXPECT_EQ(store.Text(store.FilesOf(second)[0].before.text.value()), Long('a')) << place;
        EXPECT_EQ(store.Text(text), Long('a')) << place;
    }
}

TEST_F(KeptTextsTest, ADamagedShortTextThatComesAgainIsKeptAnew) {
    for (const std::size_t place : {0U, 6U, 13U, 40U}) {
        Store store = Opened();
        const std::string former(100, static_cast<char>('a' + place));
        const std::int64_t first = Record(store, {File("/etc/x", "1", former)});
        const TextNumber text = store.FilesOf(first)[0].after.text.value();
        DamageFrame(text, place);
        EXPECT_THROW(store.Text(text), Damage) << place;
        const std::int64_t second = Record(store, {File("/etc/x", former, "2")});
        EXPECT_EQ(store.FilesOf(second)[0].before.text, text) << place;
        EXPECT_EQ(store.Text(text), former) << place;
    }
}

/// What was made to have one digest is told apart by the one that can be read.
TEST_F(KeptTextsTest, ADamagedShortTextIsNotTakenForOneThatCanBeRead) {
    Store store = Opened();
    const std::int64_t first = Record(store, {File("/etc/x", "a", "b")});
    const RecordedFile kept = store.FilesOf(first)[0];
    FileToRecord forged = File("/etc/x", "b", "a");
    forged.file.before.digest = forged.file.after.digest = std::string(16, 'd');
    forged.file.before.size = forged.file.after.size = 1;
    GiveAllOneDigest(forged.file.after.digest);
    DamageFrame(kept.before.text.value(), 6);
    const std::int64_t second = Record(store, {forged});
    EXPECT_EQ(store.FilesOf(second)[0].before.text, kept.after.text);
    EXPECT_EQ(store.Text(kept.before.text.value()), "a");
}

TEST_F(KeptTextsTest, AKeyThatWasDamagedIsMadeAnewAndTextsAreKnownAgain) {
    for (const auto damage :
         {Statement("DELETE FROM secret"), Statement("UPDATE secret SET key = x'0102'")}) {
        TextNumber text;
        {
            Store store = Opened();
            EXPECT_FALSE(store.IsKeyNew());
            text = store.FilesOf(Record(store, {File("/etc/x", "1", Long('a'))}))[0].after.text.value();
        }
        Change({damage});
        {
            Store store = Opened();
            EXPECT_TRUE(store.IsKeyNew()) << damage.Text();
            EXPECT_EQ(Count("SELECT count(*) FROM texts WHERE mark IS NOT NULL"), 0);
            const std::int64_t second = Record(store, {File("/etc/x", Long('a'), Long('b'))});
            EXPECT_EQ(store.FilesOf(second)[0].before.text, text) << damage.Text();
            EXPECT_EQ(store.Text(text), Long('a'));
            EXPECT_GE(Count("SELECT count(*) FROM texts WHERE mark IS NOT NULL"), 2);
        }
        EXPECT_FALSE(Opened().IsKeyNew());
    }
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
    EXPECT_EQ(Count("PRAGMA user_version"), 3);
    const std::int64_t second = Record(store, {File("/etc/x", Long('a'), Long('b'))});
    EXPECT_EQ(store.FilesOf(second)[0].before.text, store.FilesOf(1)[0].before.text);
    const std::int64_t third = Record(store, {File("/etc/x", Long('b'), Long('a'))});
    EXPECT_EQ(store.FilesOf(third)[0].before.text, store.FilesOf(second)[0].after.text);
    EXPECT_EQ(store.FilesOf(third)[0].after.text, store.FilesOf(1)[0].before.text);
}

}  // namespace
}  // namespace ZET::Deploy
