#include "deploy/state/store/JournalFile.h"

#include <sys/stat.h>

#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include "deploy/state/store/Sqlite.h"
#include "deploy/state/store/StoreNames.h"

namespace ZET::Deploy {

namespace {

bool IsThere(const std::string& file) {
    struct stat status = {};
    return lstat(file.c_str(), &status) == 0;
}

/// Whether an entry was completed with the journal, which keeps its name when it is emptied.
bool IsJournalKept(std::string_view journal) {
    const std::string_view store = journal.substr(0, journal.size() - std::strlen(kJournalSuffix));
    return IsThere(std::string(journal)) && IsThere(std::string(store) + kLastNumberSuffix);
}

/// SQLite's own way but for the journal. SQLite knows it until the library is unloaded.
class JournalWay {
  public:
    JournalWay() : m_own(Usual()) {
        m_own.pNext = nullptr;
        m_own.zName = "zet-kept-journal";
        m_own.xOpen = &Open;
        if (TheSqlite().addWay(&m_own, 0) != SQLITE_OK) throw std::bad_alloc();
    }
    ~JournalWay() { TheSqlite().removeWay(&m_own); }
    JournalWay(const JournalWay&) = delete;
    JournalWay& operator=(const JournalWay&) = delete;

    const char* Name() const { return m_own.zName; }

  private:
    static const sqlite3_vfs& Usual() {
        const sqlite3_vfs* const usual = TheSqlite().way(nullptr);
        if (usual == nullptr) throw std::bad_alloc();  // the library could not be started
        return *usual;
    }

    static int Open(sqlite3_vfs* /*self*/, const char* name, sqlite3_file* file, int flags, int* outFlags) {
        try {
            if ((flags & SQLITE_OPEN_WAL) != 0 && IsJournalKept(name)) flags &= ~SQLITE_OPEN_CREATE;
        } catch (const std::bad_alloc&) {
            return SQLITE_NOMEM;
        }
        sqlite3_vfs* const usual = TheSqlite().way(nullptr);
        return usual->xOpen(usual, name, file, flags, outFlags);
    }

    sqlite3_vfs m_own;
};

}  // namespace

const char* WayOfKeptJournal() {
    static const JournalWay way;
    return way.Name();
}

}  // namespace ZET::Deploy
