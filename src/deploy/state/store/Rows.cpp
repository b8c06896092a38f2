#include "deploy/state/store/Rows.h"

#include <utility>

#include "deploy/state/store/Digest.h"
#include "deploy/state/store/Packing.h"

namespace ZET::Deploy {

namespace {

/// The bytes of a row that its seal is made of.
std::string BytesOf(const RowValues& row) {
    constexpr std::size_t kUsualSize = 256;
    std::string bytes;
    bytes.reserve(kUsualSize);
    for (const Value& value : row) {
        if (const auto* number = std::get_if<std::int64_t>(&value))
            AppendPacked(bytes, "i", std::to_string(*number));
        else if (const auto* text = std::get_if<std::string>(&value))
            AppendPacked(bytes, "t", *text);
        else if (const auto* blob = std::get_if<Blob>(&value))
            AppendPacked(bytes, "b", blob->bytes);
        else
            AppendPacked(bytes, "", "");
    }
    return bytes;
}

/// With a seal, and room for the number of the row.
template <typename... Values>
RowValues SealedRow(Values&&... values) {
    RowValues row;
    row.reserve(sizeof...(values) + 2);
    (row.emplace_back(std::forward<Values>(values)), ...);
    row.emplace_back(SealOf(BytesOf(row)));
    return row;
}

/// The row at which `rows` stands; its seal is the last column.
RowValues Opened(const Database::Rows& rows, int columns) {
    RowValues row;
    row.reserve(static_cast<std::size_t>(columns));
    for (int column = 0; column < columns; ++column)
        row.push_back(rows.At(column));
    if (rows.At(columns) != Value(SealOf(BytesOf(row)))) throw DamagedRow();
    return row;
}

/// Hands out the values of a row one after the other.
class RowReader {
  public:
    explicit RowReader(RowValues row) : m_row(std::move(row)) {}

    std::int64_t Number() { return std::get<std::int64_t>(m_row.at(m_next++)); }
    std::string Text() { return std::get<std::string>(std::move(m_row.at(m_next++))); }
    std::string Bytes() { return std::get<Blob>(std::move(m_row.at(m_next++))).bytes; }

    std::optional<std::int64_t> OptionalNumber() {
        const auto* const number = std::get_if<std::int64_t>(&m_row.at(m_next++));
        return number != nullptr ? std::optional(*number) : std::nullopt;
    }

    std::optional<TextNumber> OptionalText() {
        const auto number = OptionalNumber();
        return number ? std::optional(TextNumber{*number}) : std::nullopt;
    }

    std::vector<std::string> Texts() {
        auto texts = Unpacked(Bytes());
        if (!texts) throw DamagedRow();
        return std::move(*texts);
    }

  private:
    RowValues m_row;
    std::size_t m_next = 0;
};

Value NumberOf(const std::optional<TextNumber>& text) {
    return text ? Value(text->value) : Value();
}

Blob PackedPairs(const std::map<std::string, std::string>& pairs) {
    std::vector<std::string> texts;
    for (const auto& [name, value] : pairs) {
        texts.push_back(name);
        texts.push_back(value);
    }
    return {Packed(texts)};
}

std::map<std::string, std::string> Pairs(const std::vector<std::string>& texts) {
    std::map<std::string, std::string> pairs;
    for (std::size_t i = 0; i + 1 < texts.size(); i += 2)
        pairs.emplace(texts[i], texts[i + 1]);
    return pairs;
}

Blob PackedRoles(const std::set<Role>& roles) {
    std::vector<std::string> names;
    for (const Role role : roles)
        names.emplace_back(NameOf(role));
    return {Packed(names)};
}

std::set<Role> Roles(const std::vector<std::string>& names) {
    std::set<Role> roles;
    for (const std::string& name : names)
        if (const auto role = RoleNamed(name)) roles.insert(*role);
    return roles;
}

RecordedEntry EntryOf(const Database::Rows& rows) {
    RowReader row(Opened(rows, 9));
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

RowValues RowOf(const RecordedEntry& entry) {
    return SealedRow(entry.begun, entry.ended, static_cast<std::int64_t>(entry.outcome),
                     static_cast<std::int64_t>(entry.user),
                     entry.loginUser ? Value(static_cast<std::int64_t>(*entry.loginUser)) : Value(),
                     entry.sudoUser, NameOf(entry.role), Blob{Packed(entry.words)}, entry.message);
}

/// A base that was taken out is no text's number.
constexpr TextNumber kErased{0};

Value BaseNumberOf(const Knowledge& knowledge) {
    return knowledge.isBaseErased ? NumberOf(kErased) : NumberOf(knowledge.base);
}

RowValues RowOf(const RecordedState& state) {
    return SealedRow(std::int64_t{state.exists}, std::int64_t{state.mode}, std::int64_t{state.owner},
                     std::int64_t{state.group}, PackedPairs(state.attributes),
                     static_cast<std::int64_t>(state.size), Blob{state.digest}, NumberOf(state.text),
                     PackedRoles(state.knowledge.roles),
                     state.knowledge.namedRole ? NameOf(*state.knowledge.namedRole) : "",
                     state.knowledge.templateName, BaseNumberOf(state.knowledge));
}

KnownFile KnownOf(Database& database, const Database::Rows& rows) {
    RowReader row(Opened(rows, 4));
    KnownFile file;
    file.path = row.Text();
    file.kind = static_cast<FileKind>(row.Number());
    file.state = StateAt(database, row.Number());
    file.entry = row.Number();
    return file;
}

}  // namespace

std::vector<std::int64_t> Numbers(Database& database, const char* statement, RowValues values) {
    std::vector<std::int64_t> numbers;
    Database::Rows rows(database, statement, std::move(values));
    while (rows.Next())
        numbers.push_back(rows.Number(0));
    return numbers;
}

std::int64_t FirstNumber(Database& database, const char* statement) {
    const std::vector<std::int64_t> numbers = Numbers(database, statement);
    return numbers.empty() ? 0 : numbers.front();
}

std::int64_t InsertState(Database& database, const RecordedState& state) {
    database.Run(
        "INSERT INTO states(present, mode, owner, grp, attributes, size, digest, text, roles, named_role, "
        "template,"
        " base, seal) VALUES(?,?,?,?,?,?,?,?,?,?,?,?,?)",
        RowOf(state));
    return database.LastRow();
}

void ReplaceState(Database& database, std::int64_t id, const RecordedState& state) {
    RowValues row = RowOf(state);
    row.emplace_back(id);
    database.Run(
        "UPDATE states SET present=?, mode=?, owner=?, grp=?, attributes=?, size=?, digest=?, text=?, "
        "roles=?,"
        " named_role=?, template=?, base=?, seal=? WHERE id = ?",
        std::move(row));
}

RecordedState StateAt(Database& database, std::int64_t id) {
    Database::Rows rows(database,
                        "SELECT present, mode, owner, grp, attributes, size, digest, text, roles, named_role,"
                        " template, base, seal FROM states WHERE id = ?",
                        {id});
    if (!rows.Next()) throw DamagedRow();
    RowReader row(Opened(rows, 12));
    RecordedState state;
    state.exists = row.Number() != 0;
    state.mode = static_cast<mode_t>(row.Number());
    state.owner = static_cast<uid_t>(row.Number());
    state.group = static_cast<gid_t>(row.Number());
    state.attributes = Pairs(row.Texts());
    state.size = static_cast<std::uint64_t>(row.Number());
    state.digest = row.Bytes();
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
    database.Run(
        "INSERT INTO entries(begun, ended, outcome, user, login_user, sudo_user, role, words, message, seal)"
        " VALUES(?,?,?,?,?,?,?,?,?,?)",
        RowOf(entry));
    return database.LastRow();
}

void ReplaceEntry(Database& database, const RecordedEntry& entry) {
    RowValues row = RowOf(entry);
    row.emplace_back(entry.number);
    database.Run(
        "UPDATE entries SET begun=?, ended=?, outcome=?, user=?, login_user=?, sudo_user=?, role=?, words=?,"
        " message=?, seal=? WHERE number = ?",
        std::move(row));
}

std::optional<RecordedEntry> EntryAt(Database& database, std::int64_t number) {
    Database::Rows rows(
        database,
        "SELECT begun, ended, outcome, user, login_user, sudo_user, role, words, message, seal"
        " FROM entries WHERE number = ?",
        {number});
    if (!rows.Next()) return std::nullopt;
    RecordedEntry entry = EntryOf(rows);
    entry.number = number;
    return entry;
}

/// Of the column `was_edited`; the older of the two has given it its name.
constexpr std::int64_t kWasEdited = 1;
constexpr std::int64_t kIsPutBack = 2;

void InsertFile(Database& database, std::int64_t entry, const RecordedFile& file) {
    const std::int64_t before = InsertState(database, file.before);
    const std::int64_t after = InsertState(database, file.after);
    std::optional<std::int64_t> left;
    if (file.leftBefore) left = InsertState(database, *file.leftBefore);
    database.Run(
        "INSERT INTO files(entry, path, kind, kind_before, before, after, left_before, was_edited, seal)"
        " VALUES(?,?,?,?,?,?,?,?,?)",
        SealedRow(entry, file.path, static_cast<std::int64_t>(file.kind),
                  static_cast<std::int64_t>(file.kindBefore), before, after, OptionalValue(left),
                  (file.wasEdited ? kWasEdited : 0) | (file.isPutBack ? kIsPutBack : 0)));
}

constexpr const char* kFilesOfEntry =
    "SELECT entry, path, kind, kind_before, before, after, left_before, was_edited, seal"
    " FROM files WHERE entry = ? ORDER BY id";

static std::vector<RecordedFile> FilesIn(Database& database, const char* statement, RowValues values) {
    std::vector<RecordedFile> files;
    Database::Rows rows(database, statement, std::move(values));
    while (rows.Next()) {
        RowReader row(Opened(rows, 8));
        row.Number();
        RecordedFile file;
        file.path = row.Text();
        file.kind = static_cast<FileKind>(row.Number());
        file.kindBefore = static_cast<FileKind>(row.Number());
        file.before = StateAt(database, row.Number());
        file.after = StateAt(database, row.Number());
        if (const auto left = row.OptionalNumber()) file.leftBefore = StateAt(database, *left);
        const std::int64_t how = row.Number();
        file.wasEdited = (how & kWasEdited) != 0;
        file.isPutBack = (how & kIsPutBack) != 0;
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

std::vector<RecordedFile> ChangesAt(Database& database, const std::string& path,
                                    std::optional<std::int64_t> last) {
    return FilesIn(database,
                   "SELECT entry, path, kind, kind_before, before, after, left_before, was_edited, seal"
                   " FROM files WHERE path = ?1 AND (?2 IS NULL OR entry <= ?2) ORDER BY entry DESC, id DESC",
                   {path, OptionalValue(last)});
}

bool IsOfProduct(FileKind kind) {
    return kind != FileKind::Original && kind != FileKind::Companion;
}

std::vector<LeftFile> FilesLeftBy(Database& database, std::int64_t entry) {
    std::vector<LeftFile> files;
    Database::Rows rows(database, kFilesOfEntry, {entry});
    while (rows.Next()) {
        RowReader row(Opened(rows, 8));
        row.Number();
        std::string path = row.Text();
        files.push_back({std::move(path), static_cast<FileKind>(row.Number()), rows.Number(5)});
    }
    return files;
}

void PutKnown(Database& database, const LeftFile& file, std::int64_t entry) {
    database.Run("INSERT OR REPLACE INTO known(path, kind, state, entry, seal) VALUES(?,?,?,?,?)",
                 SealedRow(file.path, static_cast<std::int64_t>(file.kind), file.state, entry));
}

std::optional<KnownFile> KnownAt(Database& database, const std::string& path) {
    Database::Rows rows(database, "SELECT path, kind, state, entry, seal FROM known WHERE path = ?", {path});
    if (!rows.Next()) return std::nullopt;
    return KnownOf(database, rows);
}

std::vector<KnownFile> AllKnown(Database& database) {
    std::vector<KnownFile> files;
    Database::Rows rows(database, "SELECT path, kind, state, entry, seal FROM known ORDER BY path");
    while (rows.Next())
        files.push_back(KnownOf(database, rows));
    return files;
}

}  // namespace ZET::Deploy
