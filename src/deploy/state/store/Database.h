#ifndef ZET_STORE_DATABASE_H
#define ZET_STORE_DATABASE_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>

struct sqlite3;
struct sqlite3_stmt;

namespace ZET::Deploy {

struct Blob {
    std::string bytes;
    bool operator==(const Blob&) const = default;
};

/// What a row has in a column; the first alternative stands for NULL.
using Value = std::variant<std::monostate, std::int64_t, std::string, Blob>;

struct BlobView {
    std::string_view bytes;
    explicit BlobView(std::string_view blob) : bytes(blob) {}
    BlobView(const Blob& blob) : bytes(blob.bytes) {}
};

/// The same in memory that somebody else owns.
using ValueView = std::variant<std::monostate, std::int64_t, std::string_view, BlobView>;
using ValueViews = std::initializer_list<ValueView>;

ValueView OptionalValue(const std::optional<std::int64_t>& number);

/// A text of the program itself. It stays at its address, by which it is recognised.
class Statement {
  public:
    consteval Statement(const char* text) : m_text(text) {}

    const char* Text() const { return m_text; }

    friend bool operator<(Statement one, Statement other) { return std::less<>()(one.m_text, other.m_text); }

  private:
    const char* m_text;
};

/// What the library reports of a call that failed.
class DatabaseError : public std::runtime_error {
  public:
    /// `errorNumber` is the `errno` of a system call that failed; 0 if none did.
    DatabaseError(const std::string& message, int code, int errorNumber)
        : std::runtime_error(message), m_code(code), m_errorNumber(errorNumber) {}

    /// Whether the file is no database, or a damaged one.
    bool IsDamage() const;
    bool IsReadOnly() const;
    bool IsFull() const;

    /// Whether a write found no room. Another error may be that of a sync: what was written may be lost.
    bool HasNoRoom() const;

    /// Whether the file system has no memory that processes share.
    bool IsOfSharedMemory() const;

    /// Whether somebody was killed in the middle of a change, which only who may write can take back.
    bool NeedsRollback() const;
    int ErrorNumber() const { return m_errorNumber; }

  private:
    int m_code;
    int m_errorNumber;
};

/// An open SQLite database. Failures throw `DatabaseError`, or `std::bad_alloc` if memory is short.
class Database {
  public:
    enum class Access {
        Write,
        Look,
        LookAtCopy  ///< a file that nobody writes meanwhile, on a read-only file system
    };

    Database(const std::string& file, Access access);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    /// Runs one statement that gives no rows, or returns the first value of the first row that it gives.
    Value Run(Statement statement, ValueViews values = {});

    /// Runs one that gives no rows.
    void RunWith(Statement statement, std::span<const ValueView> values);

    /// The number of the row that was inserted last.
    std::int64_t LastRow() const;

    /// Whether changes wait for the end of a transaction.
    bool IsInTransaction() const;

    /// From now on, the journal grows until `TakeJournalOver` is called.
    void LeaveJournal();
    bool IsJournalLeft() const { return m_isJournalLeft; }

    /// How many pages the journal had before those of the last commit; 0 if that commit began the journal
    /// anew, or `LeaveJournal` was not called.
    std::int64_t JournalBefore() const { return m_journalBefore; }

    /// Syncs the journal, copies its pages into the database's file, syncs that, and empties the journal,
    /// since whoever opens it next would not know that it was taken over. Does not wait for readers: returns
    /// false if not all pages were copied, as somebody reads older ones. Then the journal may not be synced,
    /// either.
    bool TakeJournalOver();

    /// What is changed while it lives is changed all at once on commit, or not at all.
    class Transaction {
      public:
        enum class Kind { Write, Look };
        explicit Transaction(Database& database, Kind kind = Kind::Write);
        ~Transaction();
        Transaction(const Transaction&) = delete;
        Transaction& operator=(const Transaction&) = delete;
        void Commit();

      private:
        Database& m_database;
        bool m_isOpen = true;
    };

    /// The rows that a statement gives. No other rows of the same statement may be read meanwhile.
    class Rows {
      public:
        Rows(Database& database, Statement statement, ValueViews values = {});
        ~Rows();
        Rows(const Rows&) = delete;
        Rows& operator=(const Rows&) = delete;

        /// Goes to the next row; returns false after the last one.
        bool Next();

        Value At(int column) const;
        std::int64_t Number(int column) const;
        std::string Text(int column) const { return std::string(Bytes(column)); }

        /// Valid up to the next row.
        ValueView View(int column) const;
        std::string_view Bytes(int column) const;

        std::optional<std::int64_t> OptionalNumber(int column) const;

      private:
        friend class Database;
        enum class Lifetime { OfTheRows, OfTheCall };
        Rows(Database& database, Statement statement, std::span<const ValueView> values, Lifetime lifetime);

        Database& m_database;
        sqlite3_stmt* m_statement;
    };

  private:
    struct Closer {
        void operator()(sqlite3* database) const;
    };
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const;
    };

    static int NoteJournal(void* self, sqlite3* database, const char* name, int pages);
    sqlite3_stmt* Prepared(Statement statement);
    void Bind(sqlite3_stmt* statement, std::span<const ValueView> values, void (*lifetime)(void*));
    int Require(int result);

    std::unique_ptr<sqlite3, Closer> m_database;
    std::map<Statement, std::unique_ptr<sqlite3_stmt, Finalizer>> m_statements;
    std::int64_t m_journalBefore = 0;
    bool m_isJournalLeft = false;
};

}  // namespace ZET::Deploy

#endif
