#include "deploy/state/store/Renaming.h"

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "deploy/state/store/Deletion.h"
#include "deploy/state/store/Rows.h"
#include "deploy/state/store/SealedRow.h"
#include "posix/PathNames.h"

namespace ZET::Deploy {

namespace {

/// The paths directly in the directory. All that is below it lies between "/" and "0", the next character.
std::set<std::string> PathsIn(Database& database, Statement statement, const std::string& directory) {
    std::set<std::string> paths;
    Database::Rows rows(database, statement, {directory + "/", directory + "0"});
    while (rows.Next())
        if (DirectoryOf(rows.Bytes(0)) == directory) paths.insert(rows.Text(0));
    return paths;
}

enum class Loser { IsReleased, IsHidden };

/// Called before the file's changes are renamed, as they tell whose state it has.
void RenameKnown(Database& database, const std::string& path, const std::string& name, Loser loser) {
    const std::optional<KnownRow> row = KnownRowAt(database, path);
    const std::optional<KnownRow> other = KnownRowAt(database, name);
    const bool isNewer = !other || row->entry > other->entry;
    if (other && loser == Loser::IsReleased) DeleteKnown(database, isNewer ? name : path);
    database.Run("DELETE FROM known WHERE path = ?", {path});
    if (isNewer) PutKnown(database, {name, row->file.kind, row->file.state}, row->entry);
}

void RenameChanges(Database& database, const std::string& path, const std::string& name) {
    struct Row {
        std::int64_t id, entry, kind, kindBefore, before, after, how;
        std::optional<std::int64_t> left;
    };
    std::vector<Row> all;
    Database::Rows rows(database, "SELECT " ZET_COLUMNS_OF_FILE ", id FROM files WHERE path = ?", {path});
    while (rows.Next()) {
        const RowReader sound(rows, 8);
        all.push_back({rows.Number(9), rows.Number(0), rows.Number(2), rows.Number(3), rows.Number(4),
                       rows.Number(5), rows.Number(7), rows.OptionalNumber(6)});
    }
    for (const Row& row : all)
        RunSealed(database,
                  "UPDATE files SET entry = ?, path = ?, kind = ?, kind_before = ?, before = ?, after = ?,"
                  " left_before = ?, was_edited = ?, seal = ? WHERE id = ?",
                  {row.entry, name, row.kind, row.kindBefore, row.before, row.after, OptionalValue(row.left),
                   row.how},
                  row.id);
}

}  // namespace

std::set<std::string> DirectoriesOfKnown(Database& database) {
    std::set<std::string> directories;
    std::string last;
    Database::Rows rows(database, "SELECT path FROM known");
    while (rows.Next()) {
        std::string directory = DirectoryOf(rows.Bytes(0));
        if (directory == last) continue;
        last = directory;
        directories.insert(std::move(directory));
    }
    return directories;
}

static void Rename(Database& database, const NewDirectories& directories, Loser loser) {
    for (const auto& [directory, newName] : directories) {
        for (const std::string& path :
             PathsIn(database, "SELECT path FROM known WHERE path > ? AND path < ?", directory))
            RenameKnown(database, path, PathIn(newName, BaseNameOf(path)), loser);
        for (const std::string& path :
             PathsIn(database, "SELECT DISTINCT path FROM files WHERE path > ? AND path < ?", directory))
            RenameChanges(database, path, PathIn(newName, BaseNameOf(path)));
    }
}

void RenameDirectories(Database& database, const NewDirectories& directories) {
    Rename(database, directories, Loser::IsReleased);
}

void ShowDirectoriesRenamed(Database& database, const NewDirectories& directories) {
    for (const Statement statement : {Statement("CREATE TEMP TABLE known AS SELECT * FROM main.known"),
                                      Statement("CREATE UNIQUE INDEX temp.known_by_path ON known(path)"),
                                      Statement("CREATE TEMP TABLE files AS SELECT * FROM main.files"),
                                      Statement("CREATE INDEX temp.files_by_entry ON files(entry)"),
                                      Statement("CREATE INDEX temp.files_by_path ON files(path, entry)"),
                                      Statement("CREATE INDEX temp.files_by_id ON files(id)")})
        database.Run(statement);
    Rename(database, directories, Loser::IsHidden);
}

}  // namespace ZET::Deploy
