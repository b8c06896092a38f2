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

/// What a row has in a column; the first stands for nothing.
using Value = std::variant<std::monostate, std::int64_t, std::string, Blob>;

struct BlobView {
    std::string_view bytes;
    explicit BlobView(std::string_view blob) : bytes(blob) {}
    BlobView(const Blob& blob) : bytes(blob.bytes) {}
};

/// The same in the memory of somebody else.
using ValueView = std::variant<std::monostate, std::int64_t, std::string_view, BlobView>;
using ValueViews = std::initializer_list<ValueView>;

ValueView OptionalValue(const std::optional<std::int64_t>& number);

/// A text of the program itself. It stays where it is, by which it is known again.
class Statement {
  public:
    consteval Statement(const char* text) : m_text(text) {}

    const char* Text() const { return m_text; }

    friend bool operator<(Statement one, Statement other) { return std::less<>()(one.m_text, other.m_text); }

  private:
    const char* m_text;
};

/// What the library says of a call that failed.
class DatabaseError : public std::runtime_error {
  public:
    /// `errorNumber` is the `errno` of a call of the system that failed; 0: none did.
    DatabaseError(const std::string& message, int code, int errorNumber)
        : std::runtime_error(message), m_code(code), m_errorNumber(errorNumber) {}

    /// The file is no database, or a damaged one.
    bool IsDamage() const;
    bool IsReadOnly() const;
    bool IsFull() const;

    /// To write found no room. Others, of a sync, tell that what was written may be lost.
    bool HasNoRoom() const;
    int ErrorNumber() const { return m_errorNumber; }

  private:
    int m_code;
    int m_errorNumber;
};

/// An open SQLite database. What fails throws `DatabaseError`, and `std::bad_alloc` where memory is short.
class Database {
  public:
    enum class Access {
        Write,
        Look,
        LookAtCopy  ///< of a file that nobody writes meanwhile, on a file system that is read-only
    };

    Database(const std::string& file, Access access);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    /// One statement that gives no rows, or the first value of the first row that it gives.
    Value Run(Statement statement, ValueViews values = {});

    /// One that gives no rows.
    void RunWith(Statement statement, std::span<const ValueView> values);

    /// The number of the row that was inserted last.
    std::int64_t LastRow() const;

    /// Whether what is changed waits for the end of a transaction.
    bool IsInTransaction() const;

    /// The journal grows from now on until it is taken over by a call.
    void LeaveJournal();

    /// How many pages the journal had in front of those of the last commit; none where a commit began it
    /// anew, or nobody called `LeaveJournal`.
    std::int64_t JournalBefore() const { return m_journalBefore; }

    /// Syncs the journal, brings its pages into the database's file, syncs that and empties the journal: what
    /// opens it next would not know that it was taken over. Does not wait for readers: false when not all
    /// came there, as somebody reads what is in front of them. Then nothing may be synced, either.
    bool TakeJournalOver();

    /// What is changed while it lives is changed when it is committed, or not at all.
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

    /// The rows of a statement. No other rows of the same statement may be read meanwhile.
    class Rows {
      public:
        Rows(Database& database, Statement statement, ValueViews values = {});
        ~Rows();
        Rows(const Rows&) = delete;
        Rows& operator=(const Rows&) = delete;

        /// To the next row; false behind the last one.
        bool Next();

        Value At(int column) const;
        std::int64_t Number(int column) const;
        std::string Text(int column) const { return std::string(Bytes(column)); }

        /// In place: up to the next row.
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
};

}  // namespace ZET::Deploy

#endif
