#include "deploy/state/store/StoreFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <string_view>

#include "deploy/host/Failure.h"
#include "deploy/host/FileState.h"
#include "deploy/host/PathJudge.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/state/store/LastNumber.h"
#include "deploy/state/store/Schema.h"
#include "deploy/state/store/SharedMemory.h"
#include "deploy/state/store/StoreDamage.h"
#include "deploy/state/store/StoreNames.h"
#include "posix/CreationMask.h"
#include "posix/Descriptor.h"
#include "posix/PathNames.h"

namespace ZET::Deploy {

namespace {

bool IsRightOwner(uid_t owner, const std::string& file) {
    return owner == geteuid() || owner == StateOf(DirectoryOf(file)).owner;
}

constexpr mode_t kForOwner = S_IRUSR | S_IWUSR;

/// The others hold the last number, and where what is in the journal stands.
bool HoldsTexts(std::string_view suffix) {
    return suffix.empty() || suffix == kJournalSuffix || suffix == kUndoJournalSuffix;
}

bool IsForOthers(const struct stat& status) {
    return (status.st_mode & (S_IRWXG | S_IRWXO)) != 0;
}

void RequireOwn(const std::string& name, const struct stat& status) {
    if (!S_ISREG(status.st_mode) || status.st_nlink != 1 || !IsRightOwner(status.st_uid, name)) {
        throw Damage({.file = name,
                      .text = _("is no regular file of one name that belongs to this user"),
                      .remedy = _("move it away, or set ZET_HISTORY=no to edit without the history")});
    }
    if (HasOtherWriters(name, status)) {
        throw Damage({.file = name,
                      .text = _("others may write it, so it is not used"),
                      .remedy = _("chmod 600 if what it holds can be trusted, or move it away; or set "
                                  "ZET_HISTORY=no to edit without the history")});
    }
}

/// None where there is nothing.
std::optional<struct stat> StatusOfOwn(const std::string& name) {
    struct stat status = {};
    if (lstat(name.c_str(), &status) != 0) {
        if (errno == ENOENT || errno == ENOTDIR) return std::nullopt;
        FailOfCall(name, _("cannot be looked at"));
    }
    RequireOwn(name, status);
    return status;
}

/// The size of what is there; -1 for nothing.
off_t SizeOf(const std::optional<struct stat>& status) {
    return status ? status->st_size : -1;
}

/// Before the library opens them: it would lose its locks with a descriptor that is closed after that. A file
/// system may have one mode for all, which is told by who looks again.
void KeepFromOthers(const std::string& file) {
    constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    for (const char* const suffix : kStoreSuffixes) {
        const std::string name = file + suffix;
        const Descriptor opened(open(name.c_str(), kFlags));
        if (opened < 0 && errno == ENOENT) continue;
        struct stat status = {};
        if (opened < 0 || fstat(opened, &status) != 0) FailOfCall(name, _("cannot be opened"));
        RequireOwn(name, status);
        static_cast<void>(fchmod(opened, kForOwner));
    }
}

/// Before the library makes it, with rights for everybody: its other files get the rights of this one.
void MakeFile(const std::string& file) {
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    const CreationMask mask(kOfOwnerAlone);
    const Descriptor made(open(file.c_str(), kFlags, kForOwner));
    if (made < 0 && errno != EEXIST) FailOfCall(file, _("cannot be created"));
}

/// Whether a run was killed, or is at work, between the first byte of the tables and the last: its journal
/// says that there was nothing before.
bool IsBeingMade(const std::string& file) {
    constexpr std::string_view kBegin("\xd9\xd5\x05\xf9\x20\xa1\x63\xd7", 8);
    constexpr std::size_t kPagesBefore = 16;
    const Descriptor journal(open((file + kUndoJournalSuffix).c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    char text[kPagesBefore + 4];
    if (journal < 0 || pread(journal, text, sizeof text, 0) != static_cast<ssize_t>(sizeof text))
        return false;
    const std::string_view header(text, sizeof text);
    return header.starts_with(kBegin) && header.substr(kPagesBefore) == std::string_view("\0\0\0\0", 4);
}

/// The tables come with the first byte.
void RequireEmpty(const std::string& file) {
    if (SizeOf(StatusOfOwn(file)) > 0) FailOfDamage(file, _("its tables are gone"));
}

std::unique_ptr<Database> OpenedToLook(const std::string& file, Database::Access access) {
    auto database = std::make_unique<Database>(file, access);
    if (VersionOfStore(*database, file) == 0) RequireEmpty(file);
    return database;
}

/// In a journal that is left, an entry costs two syncs, or three where it is moved or begun anew, and a
/// reader never waits for a writer. Where that is not possible, the one that is cut short loses nothing in a
/// power cut.
void ChooseJournal(Database& database, const std::string& file) {
    const Value left("wal");
    if (database.Run("PRAGMA journal_mode") == left ||
        (CanShareMemory(file) && database.Run("PRAGMA journal_mode = WAL") == left))
        database.LeaveJournal();
    else
        database.Run("PRAGMA journal_mode = TRUNCATE");
}

/// Takes over what is in the journal that is left, and has none from now on. Alone, the library needs no
/// shared memory for that.
void StopLeavingJournal(const std::string& file) {
    Database database(file, Database::Access::Write);
    database.Run("PRAGMA locking_mode = EXCLUSIVE");
    database.Run("PRAGMA journal_size_limit = 0");  // would be read again
    database.Run("PRAGMA journal_mode = TRUNCATE");
}

std::unique_ptr<Database> OpenedToRecord(const std::string& file, bool isSynced) {
    auto database = std::make_unique<Database>(file, Database::Access::Write);
    database->Run(isSynced ? Statement("PRAGMA synchronous = FULL") : Statement("PRAGMA synchronous = OFF"));
    database->Run("PRAGMA temp_store = MEMORY");
    const std::int64_t version = VersionOfStore(*database, file);
    if (version == 0) RequireEmpty(file);
    // Before there is a journal that is kept: what has no tables was never one of these.
    UpgradeStore(*database, version, file);
    ChooseJournal(*database, file);
    return database;
}

}  // namespace

FoundStore FindStore(const std::string& file) {
    off_t size = -1;
    off_t journal = -1;
    bool isForOthers = false;
    for (const char* const suffix : kStoreSuffixes) {
        const std::optional<struct stat> found = StatusOfOwn(file + suffix);
        if (*suffix == '\0') size = SizeOf(found);
        if (suffix == std::string_view(kJournalSuffix)) journal = SizeOf(found);
        isForOthers = isForOthers || (found && HoldsTexts(suffix) && IsForOthers(*found));
    }
    // The library would empty it without a word.
    if (size <= 0 && journal > 0)
        FailOfDamage(size < 0 ? file + kJournalSuffix : file,
                     _("its journal is there, and what belongs to it is gone"));
    if (size < 0) return {FoundStore::Nothing, isForOthers};
    if (size == 0 && LastNumberBeside(file) > 0) FailOfDamage(file, _("all of its changes are gone"));
    return {size == 0 || IsBeingMade(file) ? FoundStore::Blank : FoundStore::Whole, isForOthers};
}

std::unique_ptr<Database> OpenStoreToRecord(const std::string& file, FoundStore found, bool isSynced) {
    if (found.isForOthers) KeepFromOthers(file);
    if (found == FoundStore::Nothing) {
        ForgetLastNumber(file);
        MakeFile(file);
    }
    try {
        return OpenedToRecord(file, isSynced);
    } catch (const DatabaseError& error) {
        if (!error.IsOfSharedMemory()) throw;
    }
    StopLeavingJournal(file);
    return OpenedToRecord(file, isSynced);
}

void TakeJournalOver(Database& database, const std::string& file, bool isSynced) {
    try {
        if (database.TakeJournalOver()) return;
    } catch (const DatabaseError& error) {
        // Of any other one, a sync that comes later could hide that this one failed.
        if (!error.HasNoRoom()) throw;
    }
    if (!isSynced) return;
    const std::string name = file + kJournalSuffix;
    const Descriptor journal(open(name.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    if (journal < 0 || fdatasync(journal) != 0) FailOfCall(name, _("cannot be synced"));
}

std::unique_ptr<Database> OpenStoreToLook(const std::string& file, FoundStore found) {
    if (found != FoundStore::Whole)
        throw Failure({.file = file, .text = _("is not there"), .remedy = _("nothing was recorded yet")});
    try {
        return OpenedToLook(file, Database::Access::Look);
    } catch (const DatabaseError& error) {
        if (error.NeedsRollback()) return OpenedToLook(file, Database::Access::Write);
        if (!error.IsReadOnly() || eaccess(file.c_str(), R_OK) != 0) throw;
    }
    // As one that nobody writes, it would be read without what its journal has.
    if (SizeOf(StatusOfOwn(file + kJournalSuffix)) > 0)
        throw Failure({.file = file,
                       .text = _("cannot be read here: its journal needs a writable directory"),
                       .remedy = _("copy it to one, with the journal beside it (-wal), and look there by "
                                   "ZET_VAR_LIB_DIR; or let its own be written")});
    return OpenedToLook(file, Database::Access::LookAtCopy);
}

}  // namespace ZET::Deploy
