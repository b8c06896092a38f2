#include "deploy/state/store/Schema.h"

#include <unistd.h>

#include <cerrno>
#include <string>

#include "deploy/host/Failure.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/state/store/Rows.h"
#include "deploy/state/store/TextMark.h"

namespace ZET::Deploy {

namespace {

/// "ZETS", which tells a store from any other database.
constexpr std::int64_t kApplication = 0x5a455453;

/// States share texts. Since version 3, a file may be known by the state in which its last entry left it; any
/// other state belongs to one row of `files` or `known`. Each seal is a digest of its row, since a database
/// notices a damaged page, but not a changed value. Numbers of entries are never used again; `pruned` has the
/// greatest of those that are no longer kept. `was_edited` is three bits: what was there before is others'
/// work (1), a former state came back (2), and the file is known afterwards as it was before (4).
constexpr Statement kTablesOfVersion1[] = {
    ("CREATE TABLE texts(id INTEGER PRIMARY KEY, digest BLOB NOT NULL, size INTEGER NOT NULL,"
     " frame BLOB NOT NULL)"),
    "CREATE INDEX texts_by_digest ON texts(digest)",
    ("CREATE TABLE states(id INTEGER PRIMARY KEY, present INTEGER NOT NULL, mode INTEGER NOT NULL,"
     " owner INTEGER NOT NULL, grp INTEGER NOT NULL, attributes BLOB NOT NULL, size INTEGER NOT NULL,"
     " digest BLOB NOT NULL, text INTEGER REFERENCES texts, roles TEXT NOT NULL, named_role TEXT NOT NULL,"
     " template TEXT NOT NULL, base INTEGER REFERENCES texts, seal INTEGER NOT NULL)"),
    "CREATE INDEX states_by_text ON states(text) WHERE text IS NOT NULL",
    "CREATE INDEX states_by_base ON states(base) WHERE base IS NOT NULL",
    ("CREATE TABLE entries(number INTEGER PRIMARY KEY AUTOINCREMENT, begun INTEGER NOT NULL,"
     " ended INTEGER NOT NULL, outcome INTEGER NOT NULL, user INTEGER NOT NULL, login_user INTEGER,"
     " sudo_user TEXT NOT NULL, role TEXT NOT NULL, words TEXT NOT NULL, message TEXT NOT NULL,"
     " seal INTEGER NOT NULL)"),
    ("CREATE TABLE files(id INTEGER PRIMARY KEY, entry INTEGER NOT NULL REFERENCES entries, path TEXT NOT "
     "NULL,"
     " kind INTEGER NOT NULL, kind_before INTEGER NOT NULL, before INTEGER NOT NULL REFERENCES states,"
     " after INTEGER NOT NULL REFERENCES states, left_before INTEGER REFERENCES states, was_edited INTEGER "
     "NOT NULL, seal INTEGER NOT NULL)"),
    "CREATE INDEX files_by_entry ON files(entry)",
    "CREATE INDEX files_by_path ON files(path, entry)",
    ("CREATE TABLE known(path TEXT PRIMARY KEY, kind INTEGER NOT NULL, state INTEGER NOT NULL REFERENCES "
     "states,"
     " entry INTEGER NOT NULL, seal INTEGER NOT NULL) WITHOUT ROWID"),
    "CREATE TABLE pruned(id INTEGER PRIMARY KEY, number INTEGER NOT NULL)",
};

void MakeTables(Database& database) {
    for (const Statement statement : kTablesOfVersion1)
        database.Run(statement);
    database.Run("PRAGMA application_id = 1514493011");
}

/// The mark of a text is in the index, too, as the columns after a long frame are far away. A text may be
/// made from another one, which is then kept whole, for as long as it is needed.
constexpr std::int64_t kFirstWithMarks = 2;
constexpr Statement kTablesOfVersion2[] = {
    "ALTER TABLE texts ADD COLUMN mark INTEGER",
    "ALTER TABLE texts ADD COLUMN made_from INTEGER REFERENCES texts",
    "CREATE INDEX texts_by_base ON texts(made_from) WHERE made_from IS NOT NULL",
    "DROP INDEX texts_by_digest",
    "CREATE INDEX texts_by_digest ON texts(digest, size, mark)",
    "CREATE TABLE secret(id INTEGER PRIMARY KEY, key BLOB NOT NULL)",
};

std::string RandomKey(const std::string& file) {
    std::string key(kSizeOfMarkKey, '\0');
    if (getentropy(key.data(), key.size()) != 0)
        throw SystemFailure({.file = file,
                             .text = _("cannot get random bytes for its key"),
                             .remedy = _("run the command again, or set ZET_HISTORY=no")},
                            errno);
    return key;
}

void AddMarks(Database& database, const std::string& file) {
    for (const Statement statement : kTablesOfVersion2)
        database.Run(statement);
    database.Run("INSERT INTO secret(id, key) VALUES(0, ?)", {Blob{RandomKey(file)}});
}

}  // namespace

std::int64_t VersionOfStore(Database& database, const std::string& file) {
    const std::int64_t application = FirstNumber(database, "PRAGMA application_id");
    const std::int64_t version = FirstNumber(database, "PRAGMA user_version");
    if (application == 0 && version == 0 && FirstNumber(database, "SELECT count(*) FROM sqlite_schema") == 0)
        return 0;
    if (application != kApplication)
        throw Damage({.file = file,
                      .text = _("is a database, but not the history"),
                      .remedy = _("move it away, or set ZET_HISTORY=no to edit without the history")});
    if (version > kSchemaVersion) {
        throw Failure({.file = file,
                       .text = _("was written by a newer version of the product"),
                       .remedy = _("use that one, or set ZET_HISTORY=no")});
    }
    return version;
}

void UpgradeStore(Database& database, std::int64_t version, const std::string& file) {
    if (version == kSchemaVersion) return;
    Database::Transaction transaction(database);
    if (version == 0) MakeTables(database);
    if (version < kFirstWithMarks) AddMarks(database, file);
    // Version 3 has the same tables, but a program that knows only version 2 would delete a shared state.
    database.Run("PRAGMA user_version = 3");
    transaction.Commit();
}

std::optional<std::string> MarkKey(Database& database) {
    Database::Rows rows(database, "SELECT key FROM secret WHERE id = 0");
    if (!rows.Next() || rows.Bytes(0).size() != kSizeOfMarkKey) return std::nullopt;
    return rows.Text(0);
}

void RenewMarkKey(Database& database, const std::string& file) {
    Database::Transaction transaction(database);
    database.Run("INSERT OR REPLACE INTO secret(id, key) VALUES(0, ?)", {Blob{RandomKey(file)}});
    database.Run("UPDATE texts SET mark = NULL");
    transaction.Commit();
}

}  // namespace ZET::Deploy
