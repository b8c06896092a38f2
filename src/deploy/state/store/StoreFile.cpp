#include "deploy/state/store/StoreFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "deploy/host/Failure.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Remedy.h"
#include "deploy/state/store/Schema.h"
#include "posix/Descriptor.h"
#include "posix/PathNames.h"

namespace ZET::Deploy {

namespace {

bool IsRightOwner(uid_t owner, const std::string& file) {
    return owner == geteuid() || owner == StateOf(DirectoryOf(file)).owner;
}

/// The size of what is there; -1 for nothing.
off_t SizeOfOwn(const std::string& name) {
    struct stat status = {};
    if (lstat(name.c_str(), &status) != 0) {
        if (errno == ENOENT) return -1;
        throw Failure(name + ": cannot be looked at: " + std::strerror(errno) + RemedyFor(errno));
    }
    if (S_ISREG(status.st_mode) && status.st_nlink == 1 && IsRightOwner(status.st_uid, name))
        return status.st_size;
    throw Damage(name + ": is no regular file of one name that belongs to this user (move it away)");
}

/// Before the library makes it, with rights for everybody: its other files get the rights of this one.
void MakeFile(const std::string& file) {
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    const Descriptor made(open(file.c_str(), kFlags, S_IRUSR | S_IWUSR));
    if (made < 0 && errno != EEXIST)
        throw Failure(file + ": cannot be created: " + std::strerror(errno) + RemedyFor(errno));
}

/// In a journal of this kind an entry costs two syncs, and a reader never waits for a writer. A file system
/// of the network cannot have it; there, the journal that is cut short loses nothing in a power cut.
void ChooseJournal(Database& database) {
    if (database.Run("PRAGMA journal_mode = WAL") != Value("wal"))
        database.Run("PRAGMA journal_mode = TRUNCATE");
}

}  // namespace

bool HasStore(const std::string& file) {
    off_t size = -1;
    for (const char* const suffix : kStoreSuffixes) {
        const off_t found = SizeOfOwn(file + suffix);
        if (*suffix == '\0') size = found;
    }
    return size > 0;
}

std::unique_ptr<Database> OpenStoreToRecord(const std::string& file, bool isSynced) {
    const bool isNew = !HasStore(file);
    if (isNew) MakeFile(file);
    auto database = std::make_unique<Database>(file, Database::Access::Write);
    database->Run(isSynced ? "PRAGMA synchronous = FULL" : "PRAGMA synchronous = OFF");
    database->Run("PRAGMA temp_store = MEMORY");
    const std::int64_t version = VersionOfStore(*database, file);
    if (version == 0) ChooseJournal(*database);
    database->Run("PRAGMA wal_autocheckpoint = 256");
    UpgradeStore(*database, version);
    return database;
}

std::unique_ptr<Database> OpenStoreToLook(const std::string& file) {
    if (!HasStore(file)) throw Failure(file + ": is not there (nothing was recorded yet)");
    try {
        auto database = std::make_unique<Database>(file, Database::Access::Look);
        VersionOfStore(*database, file);
        return database;
    } catch (const DatabaseError& error) {
        if (!error.IsReadOnly() || eaccess(file.c_str(), R_OK) != 0) throw;
    }
    auto database = std::make_unique<Database>(file, Database::Access::LookAtCopy);
    VersionOfStore(*database, file);
    return database;
}

}  // namespace ZET::Deploy
