#include <random>

#include "StoreFixture.h"
#include "deploy/state/store/StoreFile.h"

namespace ZET::Deploy {
namespace {

/// What is synced grows its journal until that is taken over.
class JournalTest : public StoreFixture {
  protected:
    /// A text that takes many pages, unlike the one of any other number.
    static std::string Long(int number) {
        std::string text;
        std::minstd_rand random(static_cast<unsigned>(number) + 1);
        while (text.size() < 40 * kPage)
            text += static_cast<char>(random() >> 8);
        return text;
    }

    template <typename Call>
    void ExpectJournalStaysShort(Call call) {
        for (int i = 0; i < 30; ++i) {
            Store store(Name(), Store::Access::Record);
            call(store, i);
        }
        EXPECT_LT(fs::file_size(Name("-wal")), 2 * kLongJournal * kPage);
    }

    static constexpr std::size_t kPage = 4096;
};

TEST_F(JournalTest, EntriesTakeItOver) {
    ExpectJournalStaysShort(
        [](Store& store, int i) { Record(store, {File("/etc/x", Long(i), Long(i + 1))}); });
}

TEST_F(JournalTest, WhereNothingIsSyncedEachEntryTakesItOver) {
    for (int i = 0; i < 3; ++i) {
        Store store = Opened();
        Record(store, {File("/etc/x", std::to_string(i), std::to_string(i + 1))});
        EXPECT_EQ(fs::file_size(Name("-wal")), 0u);
    }
}

TEST_F(JournalTest, WhatIsDroppedTakesItOver) {
    ExpectJournalStaysShort(
        [](Store& store, int i) { store.Drop(store.Announce(Entry(), {File("/etc/x", Long(i), "")})); });
}

TEST_F(JournalTest, WhatIsRememberedTakesItOver) {
    ExpectJournalStaysShort([](Store& store, int i) { store.Remember({File("/etc/x", "", Long(i))}); });
    ExpectJournalStaysShort([](Store& store, int i) {
        store.RememberTogether([&] { store.Remember({File("/etc/x", "", Long(100 + i))}); });
    });
}

TEST_F(JournalTest, OneThatSomebodyReadsIsTakenOverWhenHeIsDone) {
    { Record(*std::make_unique<Store>(Name(), Store::Access::Record), {File("/etc/x", "1", "2")}); }
    const auto record = [&](int i) {
        Store store(Name(), Store::Access::Record);
        Record(store, {File("/etc/x", Long(i), Long(i + 1))});
    };
    {
        Database reader(Name(), Database::Access::Look);
        Database::Rows rows(reader, "SELECT number FROM entries");
        ASSERT_TRUE(rows.Next());
        for (int i = 0; i < 20; ++i)
            record(i);
    }
    EXPECT_GT(fs::file_size(Name("-wal")), 2 * kLongJournal * kPage);
    for (int i = 20; i < 40; ++i)
        record(i);
    EXPECT_LT(fs::file_size(Name("-wal")), 2 * kLongJournal * kPage);
    EXPECT_EQ(Store(Name(), Store::Access::Look).Entries(100).size(), 41u);
}

}  // namespace
}  // namespace ZET::Deploy
