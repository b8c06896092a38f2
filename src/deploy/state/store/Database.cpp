#include "deploy/state/store/Database.h"

#include <cerrno>
#include <new>

#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/state/store/JournalFile.h"
#include "deploy/state/store/Sqlite.h"
#include "posix/OpenLimit.h"

namespace ZET::Deploy {

namespace {

/// Another command may look or record at the same time.
constexpr int kPatienceMs = 5000;

struct KnownError {
    int code;
    const char* words;
};

/// SQLite speaks only English; these are its words for the errors that hosts meet.
constexpr KnownError kKnownErrors[] = {
    {SQLITE_NOTADB, ZET_TEXT("file is not a database")},
    {SQLITE_CORRUPT, ZET_TEXT("database disk image is malformed")},
    {SQLITE_FULL, ZET_TEXT("database or disk is full")},
    {SQLITE_IOERR, ZET_TEXT("disk I/O error")},
    {SQLITE_BUSY, ZET_TEXT("database is locked")},
    {SQLITE_READONLY, ZET_TEXT("attempt to write a readonly database")},
    {SQLITE_CANTOPEN, ZET_TEXT("unable to open database file")},
};

std::string WordsOf(sqlite3* database, int code) {
    for (const KnownError& known : kKnownErrors)
        if (known.code == (code & 0xff)) return _(known.words);
    return database != nullptr ? TheSqlite().message(database) : TheSqlite().describe(code);
}

/// Whether a system call may have failed. For other errors, SQLite gives the reason of an earlier one.
bool IsOfSystem(int code) {
    const int kind = code & 0xff;
    return kind == SQLITE_IOERR || kind == SQLITE_CANTOPEN;
}

[[noreturn]] void Fail(sqlite3* database, int code) {
    const int reason = errno;
    if ((code & 0xff) == SQLITE_NOMEM) throw std::bad_alloc();
    const Sqlite& sqlite = TheSqlite();
    int error = database != nullptr && IsOfSystem(code) ? sqlite.systemError(database) : 0;
    // SQLite does not report it for a commit.
    if (error == 0 && reason == EDQUOT) error = reason;
    // To SQLite, a quota that is used up is just any error.
    std::string message = WordsOf(database, error == EDQUOT ? SQLITE_FULL : code);
    if (error != 0) message += ": " + ReasonOf(error);
    throw DatabaseError(message, code, error);
}

/// The path as a URI, whatever bytes it has.
std::string UriOf(const std::string& file) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string uri = "file:";
    for (const char c : file) {
        const auto byte = static_cast<unsigned char>(c);
        const bool isPlain = c == '/' || c == '.' || c == '-' || c == '_' || (c >= '0' && c <= '9') ||
                             (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (isPlain)
            uri += c;
        else
            (uri += '%').append({kDigits[byte >> 4], kDigits[byte & 15]});
    }
    return uri;
}

std::string NameOf(const std::string& file, Database::Access access) {
    return UriOf(file) + (access == Database::Access::LookAtCopy ? "?immutable=1" : "");
}

/// While it lives, nobody is waited for.
class Impatience {
  public:
    explicit Impatience(sqlite3* database) : m_database(database) { TheSqlite().setPatience(database, 0); }
    ~Impatience() { TheSqlite().setPatience(m_database, kPatienceMs); }
    Impatience(const Impatience&) = delete;
    Impatience& operator=(const Impatience&) = delete;

  private:
    sqlite3* m_database;
};

}  // namespace

ValueView OptionalValue(const std::optional<std::int64_t>& number) {
    return number ? ValueView(*number) : ValueView();
}

bool DatabaseError::IsDamage() const {
    const int kind = m_code & 0xff;
    return kind == SQLITE_CORRUPT || kind == SQLITE_NOTADB || kind == SQLITE_FORMAT;
}

bool DatabaseError::IsReadOnly() const {
    const int kind = m_code & 0xff;
    return kind == SQLITE_READONLY || kind == SQLITE_PERM ||
           (kind == SQLITE_CANTOPEN && !IsOfOpenLimit(m_errorNumber));
}

bool DatabaseError::IsFull() const {
    return (m_code & 0xff) == SQLITE_FULL || m_errorNumber == EDQUOT;
}

bool DatabaseError::HasNoRoom() const {
    return (m_code & 0xff) == SQLITE_FULL || (m_code == SQLITE_IOERR_WRITE && m_errorNumber == EDQUOT);
}

bool DatabaseError::IsOfSharedMemory() const {
    return m_code == SQLITE_IOERR_SHMMAP && m_errorNumber != ENOMEM;
}

bool DatabaseError::NeedsRollback() const {
    return m_code == SQLITE_READONLY_ROLLBACK;
}

void Database::Closer::operator()(sqlite3* database) const {
    TheSqlite().close(database);
}

void Database::Finalizer::operator()(sqlite3_stmt* statement) const {
    TheSqlite().finalize(statement);
}

Database::Database(const std::string& file, Access access) {
    const Sqlite& sqlite = TheSqlite();
    sqlite3* database = nullptr;
    const int flags = access == Access::Write ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY;
    errno = 0;
    const int result = sqlite.open(NameOf(file, access).c_str(), &database,
                                   flags | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX, WayOfKeptJournal());
    m_database.reset(database);
    Require(result);
    sqlite.wantExtendedCodes(database, 1);
    sqlite.setPatience(database, kPatienceMs);
    Require(sqlite.configure(database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr));
    Require(sqlite.configure(database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr));
    // A close that checkpoints costs two syncs; so the journal is kept, and emptied once it has grown.
    Require(sqlite.configure(database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr));
    int keepsJournal = 1;
    sqlite.control(database, "main", SQLITE_FCNTL_PERSIST_WAL, &keepsJournal);
}

Database::~Database() = default;

int Database::Require(int result) {
    if (result != SQLITE_OK && result != SQLITE_ROW && result != SQLITE_DONE) Fail(m_database.get(), result);
    return result;
}

sqlite3_stmt* Database::Prepared(Statement statement) {
    auto& prepared = m_statements[statement];
    if (!prepared) {
        sqlite3_stmt* made = nullptr;
        errno = 0;
        Require(TheSqlite().prepare(m_database.get(), statement.Text(), -1, SQLITE_PREPARE_PERSISTENT, &made,
                                    nullptr));
        prepared.reset(made);
    }
    return prepared.get();
}

void Database::Bind(sqlite3_stmt* statement, std::span<const ValueView> values, void (*lifetime)(void*)) {
    const Sqlite& sqlite = TheSqlite();
    int index = 0;
    for (const ValueView& value : values) {
        ++index;
        if (const auto* number = std::get_if<std::int64_t>(&value))
            Require(sqlite.bindNumber(statement, index, *number));
        else if (const auto* text = std::get_if<std::string_view>(&value))
            Require(sqlite.bindText(statement, index, text->data(), text->size(), lifetime, SQLITE_UTF8));
        else if (const auto* blob = std::get_if<BlobView>(&value))
            Require(sqlite.bindBlob(statement, index, blob->bytes.data(), blob->bytes.size(), lifetime));
        else
            Require(sqlite.bindNothing(statement, index));
    }
}

Value Database::Run(Statement statement, ValueViews values) {
    Rows rows(*this, statement, values, Rows::Lifetime::OfTheCall);
    return rows.Next() ? rows.At(0) : Value();
}

void Database::RunWith(Statement statement, std::span<const ValueView> values) {
    Rows(*this, statement, values, Rows::Lifetime::OfTheCall).Next();
}

std::int64_t Database::LastRow() const {
    return TheSqlite().lastRow(m_database.get());
}

bool Database::IsInTransaction() const {
    return TheSqlite().isOutside(m_database.get()) == 0;
}

int Database::NoteJournal(void* self, sqlite3* database, const char* /*name*/, int pages) {
    int written = 0;
    int highest = 0;
    TheSqlite().status(database, SQLITE_DBSTATUS_CACHE_WRITE, &written, &highest, 1);
    static_cast<Database*>(self)->m_journalBefore = pages - written;
    return SQLITE_OK;
}

void Database::LeaveJournal() {
    TheSqlite().tellJournal(m_database.get(), &Database::NoteJournal, this);
    m_isJournalLeft = true;
}

bool Database::TakeJournalOver() {
    const Impatience impatience(m_database.get());
    Rows result(*this, "PRAGMA wal_checkpoint(TRUNCATE)");
    return result.Next() && result.Number(1) >= 0 && result.Number(1) == result.Number(2);
}

Database::Transaction::Transaction(Database& database, Kind kind) : m_database(database) {
    m_database.Run(kind == Kind::Write ? Statement("BEGIN IMMEDIATE") : Statement("BEGIN"));
}

Database::Transaction::~Transaction() {
    // Some errors end the transaction by themselves.
    if (!m_isOpen || !m_database.IsInTransaction()) return;
    try {
        m_database.Run("ROLLBACK");
    } catch (const std::exception&) {
        // What ended it is being reported, and the next one to open the database rolls back.
    }
}

void Database::Transaction::Commit() {
    m_database.Run("COMMIT");
    m_isOpen = false;
}

Database::Rows::Rows(Database& database, Statement statement, ValueViews values)
    : Rows(database, statement, values, Lifetime::OfTheRows) {}

/// What lives as long as the call need not be copied.
Database::Rows::Rows(Database& database, Statement statement, std::span<const ValueView> values,
                     Lifetime lifetime)
    : m_database(database), m_statement(database.Prepared(statement)) {
    database.Bind(m_statement, values, lifetime == Lifetime::OfTheCall ? SQLITE_STATIC : SQLITE_TRANSIENT);
}

Database::Rows::~Rows() {
    TheSqlite().reset(m_statement);
    TheSqlite().clear(m_statement);
}

bool Database::Rows::Next() {
    errno = 0;  // forgets the error of an earlier call
    return m_database.Require(TheSqlite().step(m_statement)) == SQLITE_ROW;
}

Value Database::Rows::At(int column) const {
    const ValueView value = View(column);
    if (const auto* number = std::get_if<std::int64_t>(&value)) return *number;
    if (const auto* text = std::get_if<std::string_view>(&value)) return std::string(*text);
    if (const auto* blob = std::get_if<BlobView>(&value)) return Blob{std::string(blob->bytes)};
    return {};
}

ValueView Database::Rows::View(int column) const {
    switch (TheSqlite().type(m_statement, column)) {
        case SQLITE_NULL:
            return {};
        case SQLITE_INTEGER:
            return Number(column);
        case SQLITE_TEXT:
            return Bytes(column);
        default:
            return BlobView(Bytes(column));
    }
}

std::int64_t Database::Rows::Number(int column) const {
    return TheSqlite().number(m_statement, column);
}

std::string_view Database::Rows::Bytes(int column) const {
    const auto* const bytes = static_cast<const char*>(TheSqlite().bytes(m_statement, column));
    const int size = TheSqlite().size(m_statement, column);
    return bytes == nullptr ? std::string_view() : std::string_view(bytes, static_cast<std::size_t>(size));
}

std::optional<std::int64_t> Database::Rows::OptionalNumber(int column) const {
    if (TheSqlite().type(m_statement, column) == SQLITE_NULL) return std::nullopt;
    return Number(column);
}

}  // namespace ZET::Deploy
