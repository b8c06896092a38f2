#include "StoreFixture.h"

#include <gmock/gmock.h>

#include "deploy/state/store/Rows.h"

namespace ZET::Deploy {
namespace {

using testing::ElementsAre;

/// A store whose directory "/old" is "/new" by now.
class RenamingTest : public StoreFixture {
  protected:
    Store Looked() const { return Store(Name(), Store::Access::Look); }

    /// States that no row has.
    std::int64_t Orphans() const {
        Database database(Name(), Database::Access::Look);
        return FirstNumber(
            database,
            "SELECT count(*) FROM states WHERE id NOT IN (SELECT state FROM known)"
            " AND id NOT IN (SELECT before FROM files) AND id NOT IN (SELECT after FROM files)");
    }

    static std::vector<std::string> PathsOf(Store& store) {
        std::vector<std::string> paths;
        for (const KnownFile& file : store.KnownFiles())
            paths.push_back(file.path);
        return paths;
    }

    const NewDirectories m_moved = {{"/old", "/new"}};
};

TEST_F(RenamingTest, WhoRecordsRenamesForGood) {
    {
        Store store = Opened();
        Record(store, {File("/old/x", "1", "2"), File("/else/x", "", "3")});
        EXPECT_THAT(store.KnownDirectories(), ElementsAre("/else", "/old"));
        store.Follow(m_moved);
    }
    Store store = Looked();
    EXPECT_THAT(PathsOf(store), ElementsAre("/else/x", "/new/x"));
    EXPECT_EQ(store.Text(store.Known("/new/x")->state.text.value()), "2");
    ASSERT_EQ(store.ChangesOf("/new/x").size(), 1u);
    EXPECT_TRUE(store.ChangesOf("/old/x").empty());
    EXPECT_EQ(store.FilesOf(1).front().path, "/new/x");
}

TEST_F(RenamingTest, WhoLooksWritesNothing) {
    {
        Store store = Opened();
        Record(store, {File("/old/x", "1", "2")});
        Record(store, {File("/new/x", "4", "5"), File("/old/y", "", "6")});
    }
    Store store = Looked();
    store.Follow(m_moved);
    EXPECT_THAT(PathsOf(store), ElementsAre("/new/x", "/new/y"));
    EXPECT_EQ(store.Known("/new/x")->entry, 2);
    EXPECT_EQ(store.ChangesOf("/new/x").size(), 2u);
    EXPECT_EQ(store.EntriesOf("/new/y").size(), 1u);
    Store other = Looked();
    EXPECT_THAT(PathsOf(other), ElementsAre("/new/x", "/old/x", "/old/y"));
}

TEST_F(RenamingTest, OfTwoThatAreKnownByOneNameTheNewerCounts) {
    for (const bool isMovedNewer : {true, false}) {
        Store store = Opened();
        const auto remember = [&](const char* path, const char* text) {
            Record(store, {File(path, "", text)});
            store.Remember({File(path, "", std::string(text) + " by hand")});
        };
        remember(isMovedNewer ? "/new/x" : "/old/x", "older");
        remember(isMovedNewer ? "/old/x" : "/new/x", "newer");
        store.Follow(m_moved);
        EXPECT_THAT(PathsOf(store), ElementsAre("/new/x"));
        EXPECT_EQ(store.Text(store.Known("/new/x")->state.text.value()), "newer by hand");
        EXPECT_EQ(Orphans(), 0);
        fs::remove_all(m_directory);
        fs::create_directory(m_directory);
    }
}

TEST_F(RenamingTest, OnlyWhatIsRightInTheDirectoryIsRenamed) {
    Store store = Opened();
    Record(store, {File("/old/x", "", "1"), File("/old/below/x", "", "2"), File("/old-one/x", "", "3"),
                   File("/old0/x", "", "4"), File("/old", "", "5")});
    store.Follow(m_moved);
    EXPECT_THAT(PathsOf(store), ElementsAre("/new/x", "/old", "/old-one/x", "/old/below/x", "/old0/x"));
}

}  // namespace
}  // namespace ZET::Deploy
