#include "deploy/state/store/Rows.h"

#include <utility>

#include "deploy/state/store/Packing.h"
#include "deploy/state/store/SealedRow.h"

/// The columns of a row as they are sealed. Macros, since a `Statement` takes nothing but literals.
#define COLUMNS_OF_STATE \
    "present, mode, owner, grp, attributes, size, digest, text, roles, named_role, template, base, seal"
#define COLUMNS_OF_ENTRY "begun, ended, outcome, user, login_user, sudo_user, role, words, message, seal"
#define COLUMNS_OF_KNOWN "path, kind, state, entry, seal"

namespace ZET::Deploy {

namespace {

ValueView NumberOf(const std::optional<TextNumber>& text) {
    return text ? ValueView(text->value) : ValueView();
}

std::string PackedPairs(const std::map<std::string, std::string>& pairs) {
    std::string packed;
    for (const auto& [name, value] : pairs) {
        AppendPacked(packed, name, "");
        AppendPacked(packed, value, "");
    }
    return packed;
}

std::map<std::string, std::string> PairsIn(const std::vector<std::string>& texts) {
    std::map<std::string, std::string> pairs;
    for (std::size_t i = 0; i + 1 < texts.size(); i += 2)
        pairs.emplace(texts[i], texts[i + 1]);
    return pairs;
}

std::string PackedRoles(const std::set<Role>& roles) {
    std::string packed;
    for (const Role role : roles)
        AppendPacked(packed, NameOf(role), "");
    return packed;
}

std::set<Role> Roles(const std::vector<std::string>& names) {
    std::set<Role> roles;
    for (const std::string& name : names)
        if (const auto role = RoleNamed(name)) roles.insert(*role);
    return roles;
}

RecordedEntry EntryOf(const Database::Rows& rows) {
    RowReader row(rows, 9);
    RecordedEntry entry;
    entry.begun = row.Number();
    entry.ended = row.Number();
    entry.outcome = static_cast<EntryOutcome>(row.Number());
    entry.user = static_cast<uid_t>(row.Number());
    if (const auto user = row.OptionalNumber()) entry.loginUser = static_cast<uid_t>(*user);
    entry.sudoUser = row.Text();
    entry.role = RoleNamed(row.Text()).value_or(Role::Client);
    entry.words = row.Texts();
    entry.message = row.Text();
    return entry;
}

void RunWith(Database& database, Statement statement, const RecordedEntry& entry,
             const std::optional<std::int64_t>& number = std::nullopt) {
    RunSealed(database, statement,
              {entry.begun, entry.ended, static_cast<std::int64_t>(entry.outcome),
               static_cast<std::int64_t>(entry.user),
               entry.loginUser ? ValueView(static_cast<std::int64_t>(*entry.loginUser)) : ValueView(),
               entry.sudoUser, NameOf(entry.role), BlobView(Packed(entry.words)), entry.message},
              number);
}

/// Stands for a base that was taken out; no text has this number.
constexpr TextNumber kErased{0};

ValueView BaseNumberOf(const Knowledge& knowledge) {
    return knowledge.isBaseErased ? NumberOf(kErased) : NumberOf(knowledge.base);
}

void RunWith(Database& database, Statement statement, const RecordedState& state,
             const std::optional<std::int64_t>& id = std::nullopt) {
    const Knowledge& knowledge = state.knowledge;
    RunSealed(
        database, statement,
        {std::int64_t{state.exists}, std::int64_t{state.mode}, std::int64_t{state.owner},
         std::int64_t{state.group}, BlobView(PackedPairs(state.attributes)),
         static_cast<std::int64_t>(state.size), BlobView(state.digest), NumberOf(state.text),
         BlobView(PackedRoles(knowledge.roles)), knowledge.namedRole ? NameOf(*knowledge.namedRole) : "",
         knowledge.templateName, BaseNumberOf(knowledge)},
        id);
}

KnownRow KnownRowOf(const Database::Rows& rows) {
    RowReader row(rows, 4);
    KnownRow known;
    known.file.path = row.Text();
    known.file.kind = static_cast<FileKind>(row.Number());
    known.file.state = row.Number();
    known.entry = row.Number();
    return known;
}

/// Called while the rows are open, so that the state is of the same moment.
KnownFile KnownOf(Database& database, const Database::Rows& rows) {
    KnownRow known = KnownRowOf(rows);
    return {std::move(known.file.path), known.file.kind, StateAt(database, known.file.state), known.entry};
}

}  // namespace

/// The number of the state before if the file did not exist and nothing was known of it: a row for that would
/// tell nothing.
constexpr std::int64_t kNothing = 0;

std::vector<std::int64_t> Numbers(Database& database, Statement statement, ValueViews values) {
    std::vector<std::int64_t> numbers;
    Database::Rows rows(database, statement, values);
    while (rows.Next())
        numbers.push_back(rows.Number(0));
    return numbers;
}

std::int64_t FirstNumber(Database& database, Statement statement) {
    const std::vector<std::int64_t> numbers = Numbers(database, statement);
    return numbers.empty() ? 0 : numbers.front();
}

std::int64_t InsertState(Database& database, const RecordedState& state) {
    RunWith(database, "INSERT INTO states(" COLUMNS_OF_STATE ") VALUES(?,?,?,?,?,?,?,?,?,?,?,?,?)", state);
    return database.LastRow();
}

void ReplaceState(Database& database, std::int64_t id, const RecordedState& state) {
    RunWith(database,
            "UPDATE states SET present=?, mode=?, owner=?, grp=?, attributes=?, size=?, digest=?, text=?, "
            "roles=?,"
            " named_role=?, template=?, base=?, seal=? WHERE id = ?",
            state, id);
}

RecordedState StateAt(Database& database, std::int64_t id) {
    if (id == kNothing) return {};
    Database::Rows rows(database, "SELECT " COLUMNS_OF_STATE " FROM states WHERE id = ?", {id});
    if (!rows.Next()) throw DamagedRow();
    RowReader row(rows, 12);
    RecordedState state;
    state.exists = row.Number() != 0;
    state.mode = static_cast<mode_t>(row.Number());
    state.owner = static_cast<uid_t>(row.Number());
    state.group = static_cast<gid_t>(row.Number());
    state.attributes = PairsIn(row.Texts());
    state.size = static_cast<std::uint64_t>(row.Number());
    state.digest = row.Text();
    state.text = row.OptionalText();
    state.knowledge.roles = Roles(row.Texts());
    state.knowledge.namedRole = RoleNamed(row.Text());
    state.knowledge.templateName = row.Text();
    state.knowledge.base = row.OptionalText();
    state.knowledge.isBaseErased = state.knowledge.base == kErased;
    if (state.knowledge.isBaseErased) state.knowledge.base.reset();
    return state;
}

std::int64_t InsertEntry(Database& database, const RecordedEntry& entry) {
    RunWith(database, "INSERT INTO entries(" COLUMNS_OF_ENTRY ") VALUES(?,?,?,?,?,?,?,?,?,?)", entry);
    return database.LastRow();
}

void ReplaceEntry(Database& database, const RecordedEntry& entry) {
    RunWith(
        database,
        "UPDATE entries SET begun=?, ended=?, outcome=?, user=?, login_user=?, sudo_user=?, role=?, words=?,"
        " message=?, seal=? WHERE number = ?",
        entry, entry.number);
}

std::optional<RecordedEntry> EntryAt(Database& database, std::int64_t number) {
    Database::Rows rows(database, "SELECT " COLUMNS_OF_ENTRY " FROM entries WHERE number = ?", {number});
    if (!rows.Next()) return std::nullopt;
    RecordedEntry entry = EntryOf(rows);
    entry.number = number;
    return entry;
}

/// Bits of the column `was_edited`, which is named after the oldest of them.
constexpr std::int64_t kWasEdited = 1;
constexpr std::int64_t kIsPutBack = 2;
constexpr std::int64_t kStaysKnown = 4;

void InsertFile(Database& database, std::int64_t entry, const RecordedFile& file) {
    const bool isNew = file.before == RecordedState();
    const std::int64_t before = isNew ? kNothing : InsertState(database, file.before);
    const std::int64_t after = InsertState(database, file.after);
    std::optional<std::int64_t> left;
    if (file.knownAsBefore) left = InsertState(database, *file.knownAsBefore);
    RunSealed(database, "INSERT INTO files(" ZET_COLUMNS_OF_FILE ") VALUES(?,?,?,?,?,?,?,?,?)",
              {entry, file.path, static_cast<std::int64_t>(file.kind),
               static_cast<std::int64_t>(file.kindBefore), before, after, OptionalValue(left),
               (file.wasEdited ? kWasEdited : 0) | (file.isPutBack ? kIsPutBack : 0) |
                   (file.staysKnown ? kStaysKnown : 0)});
}

constexpr Statement kFilesOfEntry = "SELECT " ZET_COLUMNS_OF_FILE " FROM files WHERE entry = ? ORDER BY id";

static std::vector<RecordedFile> FilesIn(Database& database, Statement statement, ValueViews values) {
    std::vector<RecordedFile> files;
    Database::Rows rows(database, statement, values);
    while (rows.Next()) {
        RowReader row(rows, 8);
        row.Number();
        RecordedFile file;
        file.path = row.Text();
        file.kind = static_cast<FileKind>(row.Number());
        file.kindBefore = static_cast<FileKind>(row.Number());
        file.before = StateAt(database, row.Number());
        file.after = StateAt(database, row.Number());
        if (const auto left = row.OptionalNumber()) file.knownAsBefore = StateAt(database, *left);
        const std::int64_t how = row.Number();
        file.wasEdited = (how & kWasEdited) != 0;
        file.isPutBack = (how & kIsPutBack) != 0;
        file.staysKnown = (how & kStaysKnown) != 0;
        files.push_back(std::move(file));
    }
    return files;
}

std::vector<RecordedFile> FilesAt(Database& database, std::int64_t entry) {
    return FilesIn(database, kFilesOfEntry, {entry});
}

std::vector<StatesOfFile> StatesOfFileAt(Database& database, std::int64_t entry, const std::string& path) {
    std::vector<StatesOfFile> states;
    Database::Rows rows(database, "SELECT before, after FROM files WHERE entry = ? AND path = ?",
                        {entry, path});
    while (rows.Next())
        states.push_back({rows.Number(0), rows.Number(1)});
    return states;
}

static std::optional<RecordedFile> FirstOf(std::vector<RecordedFile> files) {
    return files.empty() ? std::nullopt : std::optional(std::move(files.front()));
}

std::vector<RecordedFile> ChangesAt(Database& database, const std::string& path) {
    return FilesIn(database,
                   "SELECT " ZET_COLUMNS_OF_FILE " FROM files WHERE path = ? ORDER BY entry DESC, id DESC",
                   {path});
}

std::optional<RecordedFile> LastChangeAt(Database& database, const std::string& path, std::int64_t last) {
    return FirstOf(FilesIn(
        database,
        "SELECT " ZET_COLUMNS_OF_FILE
        " FROM files WHERE path = ? AND entry <= ? AND entry >= ifnull((SELECT number FROM pruned), 0)"
        " ORDER BY entry DESC, id DESC LIMIT 1",
        {path, last}));
}

std::optional<RecordedFile> FirstChangeBehind(Database& database, const std::string& path,
                                              std::int64_t entry) {
    return FirstOf(FilesIn(database,
                           "SELECT " ZET_COLUMNS_OF_FILE
                           " FROM files WHERE path = ? AND entry > ? ORDER BY entry, id LIMIT 1",
                           {path, entry}));
}

std::optional<RecordedFile> ChangeAt(Database& database, std::int64_t entry, const std::string& path) {
    return FirstOf(FilesIn(database,
                           "SELECT " ZET_COLUMNS_OF_FILE
                           " FROM files WHERE entry = ? AND path = ? ORDER BY id LIMIT 1",
                           {entry, path}));
}

bool IsOfProduct(FileKind kind) {
    return kind != FileKind::Original && kind != FileKind::Companion;
}

std::vector<LeftFile> FilesLeftBy(Database& database, std::int64_t entry) {
    std::vector<LeftFile> files;
    Database::Rows rows(database, kFilesOfEntry, {entry});
    while (rows.Next()) {
        RowReader row(rows, 8);
        row.Number();
        std::string path = row.Text();
        files.push_back({std::move(path), static_cast<FileKind>(row.Number()), rows.Number(5)});
    }
    return files;
}

void PutKnown(Database& database, const LeftFile& file, std::int64_t entry) {
    RunSealed(database, "INSERT OR REPLACE INTO known(" COLUMNS_OF_KNOWN ") VALUES(?,?,?,?,?)",
              {file.path, static_cast<std::int64_t>(file.kind), file.state, entry});
}

constexpr Statement kKnownOfPath = "SELECT " COLUMNS_OF_KNOWN " FROM known WHERE path = ?";

std::optional<KnownRow> KnownRowAt(Database& database, const std::string& path) {
    Database::Rows rows(database, kKnownOfPath, {path});
    if (!rows.Next()) return std::nullopt;
    return KnownRowOf(rows);
}

std::optional<KnownFile> KnownAt(Database& database, const std::string& path) {
    Database::Rows rows(database, kKnownOfPath, {path});
    if (!rows.Next()) return std::nullopt;
    return KnownOf(database, rows);
}

std::vector<KnownFile> AllKnown(Database& database) {
    std::vector<KnownFile> files;
    Database::Rows rows(database, "SELECT " COLUMNS_OF_KNOWN " FROM known ORDER BY path");
    while (rows.Next())
        files.push_back(KnownOf(database, rows));
    return files;
}

}  // namespace ZET::Deploy
