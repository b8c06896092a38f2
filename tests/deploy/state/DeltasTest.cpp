#include "KeptTextsFixture.h"
#include "deploy/host/Failure.h"
#include "deploy/state/store/Compression.h"
#include "deploy/state/store/PlainFrame.h"
#include "deploy/state/store/SealedFrame.h"
#include "deploy/state/store/StoreFile.h"
#include "deploy/state/store/StoreNames.h"

namespace ZET::Deploy {
namespace {

/// Long texts that come from each other by edits.
class DeltasTest : public KeptTextsFixture {
  protected:
    static std::string Version(int number) {
        std::string text = Long('a');
        text.append("secret ").append(std::to_string(number)).append("\n");
        return text.append(Long('z'));
    }

    static std::int64_t RecordEdit(Store& store, int from, const std::string& path = "/etc/x") {
        return Record(store, {File(path, Version(from), Version(from + 1))});
    }

    std::int64_t CountWhole() const { return Count("SELECT count(*) FROM texts WHERE made_from IS NULL"); }
    std::int64_t CountAll() const { return Count("SELECT count(*) FROM texts"); }

    bool IsAnywhere(const std::string& bytes) const {
        std::string all;
        for (const char* const suffix : kStoreSuffixes)
            all += Bytes(Name(suffix));
        return all.find(bytes) != std::string::npos;
    }

    static TextNumber NumberAfter(Store& store, std::int64_t number) {
        return store.FilesOf(number)[0].after.text.value();
    }

    static std::string After(Store& store, std::int64_t number) {
        return store.Text(NumberAfter(store, number));
    }
};

TEST_F(DeltasTest, AnEditIsKeptAsWhatItChanged) {
    Store store = Opened();
    for (int i = 0; i < 10; ++i)
        RecordEdit(store, i);
    EXPECT_EQ(CountAll(), 11);
    EXPECT_EQ(CountWhole(), 1);
    EXPECT_LT(Count("SELECT max(length(frame)) FROM texts WHERE made_from IS NOT NULL"), 100);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(After(store, i + 1), Version(i + 1));
}

TEST_F(DeltasTest, AnAnnouncedEditIs) {
    Store store = Opened();
    FileToRecord file = File("/etc/x", Version(0), "");
    file.isPlanned = false;
    const std::int64_t number = store.Announce(Entry(), {file});
    store.Plan(number, {File("/etc/x", Version(0), Version(1))});
    store.Close(number, EntryOutcome::Done);
    EXPECT_EQ(CountWhole(), 1);
    EXPECT_EQ(After(store, number), Version(1));
}

TEST_F(DeltasTest, WhatTheyAreMadeFromStaysAsLongAsTheyDo) {
    StoreLimits limits;
    limits.entries = 2;
    Store store = Opened(limits);
    std::int64_t last = 0;
    for (int i = 0; i < 10; ++i)
        last = RecordEdit(store, i);
    EXPECT_EQ(After(store, last), Version(10));
    EXPECT_EQ(CountAll(), 4);  // of two entries, and the first of all
    for (int i = 0; i < 2; ++i)
        last = Record(store, {File("/etc/x", "1", "2")});
    EXPECT_EQ(CountAll(), 2);
}

TEST_F(DeltasTest, DamageOfWhatTheyAreMadeFromIsTold) {
    Store store = Opened();
    const std::int64_t number = RecordEdit(store, 0);
    {
        Database database(Name(), Database::Access::Write);
        database.Run("UPDATE texts SET frame = ? WHERE made_from IS NULL", {Blob{Compressed(Long('q'))}});
    }
    EXPECT_THROW(After(store, number), Damage);
    Change({"DELETE FROM texts WHERE made_from IS NULL"});
    EXPECT_THROW(After(store, number), Damage);
}

TEST_F(DeltasTest, NoneIsMadeFromADamagedText) {
    Store store = Opened();
    for (int i = 0; i < 3; ++i)
        RecordEdit(store, i);
    DamageFrame(store.FilesOf(1)[0].before.text.value(), 30);
    for (int i = 3; i < 6; ++i)
        EXPECT_EQ(After(store, RecordEdit(store, i)), Version(i + 1));
    // The first that came after the damage is what the others are made from.
    EXPECT_EQ(Count("SELECT count(DISTINCT made_from) FROM texts"), 2);
    EXPECT_EQ(store.Erase({"/etc/x"}).texts, 7U);
    EXPECT_EQ(CountAll(), 0);
}

TEST_F(DeltasTest, OneThatComesAgainIsKeptWholeWhereItsBaseWasDamaged) {
    Store store = Opened();
    const std::int64_t first = RecordEdit(store, 0);
    DamageFrame(store.FilesOf(first)[0].before.text.value(), 30);
    EXPECT_THROW(After(store, first), Damage);
    Record(store, {File("/etc/y", "none", Version(1))});
    EXPECT_EQ(After(store, first), Version(1));
}

TEST_F(DeltasTest, AKnownOneIsKnownWithoutItsMark) {
    Store store = Opened();
    const std::int64_t first = RecordEdit(store, 0);
    Change({"UPDATE texts SET mark = NULL"});
    const std::int64_t second = Record(store, {File("/etc/y", "none", Version(1))});
    EXPECT_EQ(NumberAfter(store, second), NumberAfter(store, first));
}

TEST_F(DeltasTest, NoneGoesOnFromADamagedOne) {
    Store store = Opened();
    std::int64_t last = RecordEdit(store, 0);
    for (int i = 1; i < 200; i += 2) {
        last = RecordEdit(store, i);  // made from a sound one
        DamageFrame(NumberAfter(store, last), static_cast<std::size_t>(i / 2));
        EXPECT_THROW(After(store, last), Damage) << i;
        last = RecordEdit(store, i + 1);
        EXPECT_EQ(After(store, last), Version(i + 2)) << i;
    }
}

TEST_F(DeltasTest, TheSameIsTrueOfAShortText) {
    const std::string text(kLongestPlainText, 's');
    Store store = Opened();
    const std::int64_t first = Record(store, {File("/etc/short", "none", text)});
    Record(store, {File("/etc/short", text, text + "1")});
    const auto madeFromIt = [&] { return Count("SELECT count(*) FROM texts WHERE made_from = 2"); };
    ASSERT_EQ(NumberAfter(store, first).value, 2);
    EXPECT_EQ(madeFromIt(), 1);
    DamageFrame(NumberAfter(store, first), text.size() / 2);
    EXPECT_EQ(After(store, Record(store, {File("/etc/short", text + "1", text + "12")})), text + "12");
    EXPECT_EQ(madeFromIt(), 1);
}

TEST_F(DeltasTest, ATextWithoutAChecksumOfItsFrameIsReadAndNoneIsMadeFromIt) {
    Store store = Opened();
    const std::int64_t first = Record(store, {File("/etc/x", "none", Version(0))});
    GiveFrame(NumberAfter(store, first), Compressed(Version(0)));
    const std::int64_t second = RecordEdit(store, 0);
    EXPECT_EQ(Count("SELECT count(*) FROM texts WHERE made_from IS NOT NULL"), 0);
    const std::int64_t third = RecordEdit(store, 1);
    EXPECT_EQ(Count("SELECT made_from FROM texts WHERE made_from IS NOT NULL"),
              NumberAfter(store, second).value);
    for (const std::int64_t number : {first, second, third})
        EXPECT_EQ(After(store, number), Version(static_cast<int>(number) - 1));
}

TEST_F(DeltasTest, OneThatIsHeldElsewhereOutlivesTheErasureOfWhatItIsMadeFrom) {
    StoreLimits limits;
    limits.entries = 3;
    Store store = Opened(limits);
    RecordEdit(store, 0, "/etc/erased");
    RecordEdit(store, 1, "/etc/erased");
    Record(store, {File("/etc/held", "none", Version(2))});
    const std::int64_t held = Record(store, {File("/etc/other", Version(2), "none")});
    // Version 0 is nobody's any more, but versions 1 and 2 are made from it.
    ASSERT_EQ(CountWhole(), 2);
    const Erasure erased = store.Erase({"/etc/erased"});
    EXPECT_EQ(erased.texts, 2u);
    EXPECT_EQ(erased.alsoHeld, (std::vector<std::string>{"/etc/held", "/etc/other"}));
    EXPECT_EQ(Count("SELECT count(*) FROM texts WHERE made_from IS NOT NULL"), 0);
    EXPECT_EQ(CountAll(), 2);
    EXPECT_EQ(store.Text(store.FilesOf(held)[0].before.text.value()), Version(2));
}

TEST_F(DeltasTest, ErasedOnesAreInNoneOfItsFiles) {
    Store store = Opened();
    const std::string secret = Long('a').append("a password that nobody may see");
    Record(store, {File("/etc/erased", Long('a'), secret)});
    Record(store, {File("/etc/erased", secret, "3")});
    ASSERT_TRUE(IsAnywhere("a password that nobody may see"));
    store.Erase({"/etc/erased"});
    EXPECT_FALSE(IsAnywhere("a password that nobody may see"));
}

TEST_F(DeltasTest, DamageOfTheTextsOfAnotherFileKeepsNoneFromBeingErased) {
    StoreLimits limits;
    limits.entries = 2;
    Store store = Opened(limits);
    for (int i = 0; i < 3; ++i)
        RecordEdit(store, i, "/etc/other");
    // Version 0 is nobody's any more, but the others are made from it.
    Change({"UPDATE texts SET frame = x'00' WHERE made_from IS NULL"});
    const std::int64_t last = Record(store, {File("/etc/erased", "1", "a password")});
    const auto deltasOfOther = [&] { return Count("SELECT count(*) FROM texts WHERE made_from = 1"); };
    ASSERT_EQ(deltasOfOther(), 2);
    EXPECT_EQ(store.Erase({"/etc/erased"}).texts, 2u);
    EXPECT_FALSE(IsAnywhere("a password"));
    EXPECT_EQ(deltasOfOther(), 2);
    EXPECT_THROW(After(store, last - 1), Damage);
}

TEST_F(DeltasTest, ErasureOfOneFileLeavesTheTextsOfOthersAsTheyAreKept) {
    StoreLimits limits;
    limits.entries = 2;
    Store store = Opened(limits);
    std::int64_t last = 0;
    for (int i = 0; i < 3; ++i)
        last = RecordEdit(store, i, "/etc/other");
    Record(store, {File("/etc/erased", "1", "2")});
    store.Erase({"/etc/erased"});
    EXPECT_EQ(Count("SELECT count(*) FROM texts WHERE made_from = 1"), 2);
    EXPECT_EQ(After(store, last), Version(3));
}

TEST_F(DeltasTest, WhatCannotBeMadeWholeKeepsNoTextFromBeingErased) {
    StoreLimits limits;
    limits.entries = 3;
    for (const int pruned : {0, 1}) {
        for (const char* const suffix : kStoreSuffixes)
            fs::remove(Name(suffix));
        Store store = Opened(limits);
        for (int i = 0; i < 1 + pruned; ++i)
            RecordEdit(store, i, "/etc/erased");
        Record(store, {File("/etc/held", "none", Version(1 + pruned))});
        const std::int64_t held = Record(store, {File("/etc/other", Version(1 + pruned), "none")});
        Change({"UPDATE texts SET frame = CAST('a password, damaged' AS BLOB) WHERE id = 1"});
        const Erasure erased = store.Erase({"/etc/erased"});
        EXPECT_EQ(erased.alsoHeld, (std::vector<std::string>{"/etc/held", "/etc/other"}));
        EXPECT_FALSE(IsAnywhere("a password, damaged"));
        EXPECT_EQ(Count("SELECT count(*) FROM texts WHERE id = 1"), 0);
        EXPECT_THROW(store.Text(store.FilesOf(held)[0].before.text.value()), Damage);
    }
}

}  // namespace
}  // namespace ZET::Deploy
