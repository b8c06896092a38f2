#ifndef ZET_STORE_ROWS_H
#define ZET_STORE_ROWS_H

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "deploy/host/Words.h"
#include "deploy/state/store/Database.h"
#include "deploy/state/store/Records.h"

/// How records are stored in rows. A row that is not as it was written throws a `DamagedRow`.
namespace ZET::Deploy {

class DamagedRow : public std::runtime_error {
  public:
    explicit DamagedRow(const char* what = _("a row is not as it was written")) : std::runtime_error(what) {}
};

/// The first column of each row that the statement finds.
std::vector<std::int64_t> Numbers(Database& database, Statement statement, ValueViews values = {});

/// 0 if no row is found.
std::int64_t FirstNumber(Database& database, Statement statement);

std::int64_t InsertState(Database& database, const RecordedState& state);
void ReplaceState(Database& database, std::int64_t id, const RecordedState& state);
RecordedState StateAt(Database& database, std::int64_t id);

std::int64_t InsertEntry(Database& database, const RecordedEntry& entry);
void ReplaceEntry(Database& database, const RecordedEntry& entry);
std::optional<RecordedEntry> EntryAt(Database& database, std::int64_t number);

/// Throws a `DamagedRow` if the entry is missing.
inline RecordedEntry RequiredEntry(Database& database, std::int64_t number) {
    auto entry = EntryAt(database, number);
    if (!entry) throw DamagedRow();
    return std::move(*entry);
}

/// As they are sealed. A macro, since a `Statement` takes nothing but literals.
#define ZET_COLUMNS_OF_FILE "entry, path, kind, kind_before, before, after, left_before, was_edited, seal"

void InsertFile(Database& database, std::int64_t entry, const RecordedFile& file);
std::vector<RecordedFile> FilesAt(Database& database, std::int64_t entry);

/// The rows with the states of a file that an entry has.
struct StatesOfFile {
    std::int64_t before;
    std::int64_t after;
};
std::vector<StatesOfFile> StatesOfFileAt(Database& database, std::int64_t entry, const std::string& path);

/// The changes of one file, from the newest entry to the oldest.
std::vector<RecordedFile> ChangesAt(Database& database, const std::string& path);

/// The change of one file by the newest entry up to `last` that has it.
std::optional<RecordedFile> LastChangeAt(Database& database, const std::string& path, std::int64_t last);

/// The change of one file by the oldest entry after this one that has it.
std::optional<RecordedFile> FirstChangeBehind(Database& database, const std::string& path,
                                              std::int64_t entry);

/// The change of one file by the entry.
std::optional<RecordedFile> ChangeAt(Database& database, std::int64_t entry, const std::string& path);

/// A file as an entry left it.
struct LeftFile {
    std::string path;
    FileKind kind;
    std::int64_t state;
};
std::vector<LeftFile> FilesLeftBy(Database& database, std::int64_t entry);

/// Whether what is known of such a file is kept; a companion is known by its file.
bool IsOfProduct(FileKind kind);

/// The state is in its row already.
void PutKnown(Database& database, const LeftFile& file, std::int64_t entry);

/// What is known of a file, without a look at its state.
struct KnownRow {
    LeftFile file;
    std::int64_t entry;
};
std::optional<KnownRow> KnownRowAt(Database& database, const std::string& path);
std::optional<KnownFile> KnownAt(Database& database, const std::string& path);
std::vector<KnownFile> AllKnown(Database& database);

}  // namespace ZET::Deploy

#endif
