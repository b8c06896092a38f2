#ifndef ZET_TEST_STORE_FIXTURE_H
#define ZET_TEST_STORE_FIXTURE_H

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "deploy/state/store/Store.h"

namespace ZET::Deploy {

namespace fs = std::filesystem;

inline std::string Bytes(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline RecordedState State(mode_t mode = 0644) {
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

inline FileToRecord File(const std::string& path, const std::string& before, const std::string& after) {
    FileToRecord file;
    file.file.path = path;
    file.file.kind = FileKind::Target;
    file.file.before = file.file.after = State();
    file.textBefore = before;
    file.textAfter = after;
    return file;
}

inline RecordedEntry Entry(const std::vector<std::string>& words = {"param", "set"}) {
    RecordedEntry entry;
    entry.user = 1000;
    entry.loginUser = 1001;
    entry.sudoUser = "anna";
    entry.role = Role::Server;
    entry.words = words;
    entry.message = "because";
    return entry;
}

/// Records one finished entry.
inline std::int64_t Record(Store& store, const std::vector<FileToRecord>& files) {
    const std::int64_t number = store.Open(Entry(), files);
    store.Close(number, EntryOutcome::Done);
    return number;
}

/// From now on, nothing is known of the file.
inline void Forget(Store& store, const std::string& path) {
    FileToRecord file;
    file.file.path = path;
    file.file.kind = FileKind::Original;
    store.Remember({file});
}

/// A directory for a store.
class StoreFixture : public testing::Test {
  protected:
    StoreFixture() {
        std::string name = testing::TempDir() + "zet-store.XXXXXX";
        m_directory = fs::canonical(mkdtemp(name.data()));
    }
    ~StoreFixture() override { fs::remove_all(m_directory); }

    std::string Name(const std::string& suffix = "") const {
        return (m_directory / "state.db").string() + suffix;
    }

    Store Opened(const StoreLimits& limits = {}) const {
        return Store(Name(), Store::Access::Record, limits, false);
    }

    fs::path m_directory;
};

}  // namespace ZET::Deploy

#endif
