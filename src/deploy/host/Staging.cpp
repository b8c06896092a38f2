#include "deploy/host/Staging.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <utility>

#include "deploy/host/Remedy.h"
#include "deploy/host/StagingPlaces.h"
#include "deploy/host/Words.h"
#include "posix/DirectoryStream.h"
#include "posix/OpenLimit.h"
#include "posix/PathNames.h"

namespace ZET::Deploy {

namespace {

namespace fs = std::filesystem;

constexpr char kPrefix[] = "zet-staging.";
constexpr char kLock[] = "lock";
constexpr char kMakeRoom[] = ZET_TEXT("make room, or name another directory with TMPDIR");
constexpr char kFiles[] = "files";  // beside the lock, so that no file can have its name
constexpr int kDirectory = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;

/// Null if it fails, with `errno` set. `directory` stays open.
DirectoryStream EntriesOf(int directory) {
    const int copy = openat(directory, ".", kDirectory);
    DirectoryStream entries(copy < 0 ? nullptr : fdopendir(copy));
    if (copy >= 0 && !entries) close(copy);
    return entries;
}

bool IsGone(int result) {
    return result == 0 || errno == ENOENT;
}

/// Removes an entry of a directory with all that is below it; `error` gets the first failure. Nothing in here
/// throws: it has to work when memory has run out.
void RemoveEntry(int directory, const char* name, int& error) noexcept {
    if (IsGone(unlinkat(directory, name, 0))) return;
    if (errno == EISDIR || errno == EPERM) {
        const Descriptor below(openat(directory, name, kDirectory));
        const DirectoryStream entries = below < 0 ? nullptr : EntriesOf(below);
        if (!entries && error == 0) error = errno;
        while (const dirent* entry = entries ? readdir(entries.get()) : nullptr) {
            const std::string_view found = entry->d_name;
            if (found != "." && found != "..") RemoveEntry(below, entry->d_name, error);
        }
        if (IsGone(unlinkat(directory, name, AT_REMOVEDIR))) return;
    }
    if (error == 0) error = errno;
}

struct LeftDirectory {
    std::string path;
    int error = 0;
};

/// The last directory that could not be removed.
LeftDirectory& Left() {
    static LeftDirectory left;
    return left;
}

/// Removes a staging directory, or remembers why it could not.
void RemoveStaging(int place, std::string path) noexcept {
    int error = ENOTEMPTY;
    // Another run that looks for left-overs may make the lock anew meanwhile.
    for (int tries = 0; tries < 3 && error == ENOTEMPTY; ++tries) {
        error = 0;
        RemoveEntry(place, path.c_str() + path.rfind('/') + 1, error);
    }
    if (error == 0) return;
    Left().path = std::move(path);
    Left().error = error;
}

bool IsOwn(int directory, mode_t forbidden) {
    struct stat status = {};
    return directory >= 0 && fstat(directory, &status) == 0 && status.st_uid == geteuid() &&
           (status.st_mode & forbidden) == 0;
}

/// Locks a file, as not every file system can lock the directory. None if it fails, with `errno` set: to
/// EAGAIN if another process holds the lock, or has just removed the directory.
Descriptor LockOf(int directory) {
    Descriptor lock(openat(directory, kLock, O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600));
    if (lock < 0) {
        if (errno == ENOENT) errno = EAGAIN;
        return lock;
    }
    struct flock whole = {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    struct stat status = {};
    if (fcntl(lock, F_OFD_SETLK, &whole) == 0 && fstat(lock, &status) == 0) {
        if (status.st_nlink > 0) return lock;
        errno = EAGAIN;
    }
    if (errno == EACCES) errno = EAGAIN;
    return Descriptor();
}

/// Whether another user could make root remove something by giving it such a name.
bool IsOthers(int directory) {
    if (geteuid() != 0) return false;
    const std::string link = "/proc/self/fd/" + std::to_string(directory);
    return access(link.c_str(), F_OK) != 0 || SafePlace(link).empty();
}

/// A run that is alive holds its lock.
void RemoveLeftOversIn(const std::string& place, bool isProducts) {
    // Not by std::filesystem, whose iterator ends the program when memory runs out.
    const DirectoryStream entries(opendir(place.c_str()));
    while (const dirent* entry = entries ? readdir(entries.get()) : nullptr) {
        if (!std::string_view(entry->d_name).starts_with(kPrefix)) continue;
        const int directory = dirfd(entries.get());
        const Descriptor leftOver(openat(directory, entry->d_name, kDirectory));
        if (!IsOwn(leftOver, S_IRWXG | S_IRWXO)) continue;
        if (!isProducts && IsOthers(directory)) return;
        const Descriptor lock = LockOf(leftOver);
        if (lock >= 0) RemoveStaging(directory, place + "/" + entry->d_name);
    }
}

/// Reading 100,000 names takes 35 ms; a directory of this size holds some ten thousand.
bool IsCrowded(const std::string& place) {
    constexpr off_t kManyNames = off_t{1} << 20;
    struct stat status = {};
    return stat(place.c_str(), &status) == 0 && status.st_size > kManyNames;
}

[[noreturn]] void FailPlace(const std::string& place, int error, const std::string& lastResort) {
    std::string remedy;  // empty: that of the reason
    if (!IsOfOpenLimit(error))
        remedy = lastResort.empty()
                     ? _(kMakeRoom)
                     : _("make room, or let ZET_VAR_LIB_DIR be a directory that can be written");
    throw SystemFailure(
        {.file = place, .text = _("no directory for temporary files can be made here"), .remedy = remedy},
        error);
}

}  // namespace

Staging::Staging(const std::string& lastResort, std::uintmax_t size) {
    const std::vector<std::string> places = PlacesForStaging(lastResort, size);
    for (const std::string& place : places) {
        const std::string path = fs::absolute(place).string();
        RemoveLeftOversIn(path, place == lastResort);
        errno = 0;
        Make(path);
        if (m_lock >= 0) return;
        if (place == places.back()) FailPlace(place, errno, lastResort);
    }
}

/// Leaves `m_lock` closed if it fails, with `errno` set.
void Staging::Make(const std::string& place) {
    m_place = Descriptor(open(place.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
    if (m_place < 0) return;
    // Until it is locked, another run can take the directory for a left-over and remove it.
    constexpr int kMostTries = 10;
    for (int tries = 0; tries < kMostTries; ++tries) {
        m_directory = place + "/" + kPrefix + "XXXXXX";
        if (mkdtemp(m_directory.data()) == nullptr) return;
        // Memory that runs out now must not leave the directory behind, so nothing is allocated.
        const char* const name = m_directory.c_str() + place.size() + 1;
        const Descriptor directory(openat(m_place, name, kDirectory));
        if (IsOwn(directory, S_IRWXG | S_IRWXO)) {
            m_lock = LockOf(directory);
        } else if (directory >= 0) {
            errno = EACCES;
        }
        if (m_lock >= 0) return;
        const int error = errno;
        RemoveStaging(m_place, m_directory);
        errno = error;
        if (error != EAGAIN && error != ENOENT) return;
    }
}

Staging::~Staging() {
    if (m_lock >= 0) RemoveStaging(m_place, std::move(m_directory));
}

std::string Staging::PathOf(const std::string& name) const {
    std::string path = m_directory + "/" + kFiles + Normalised(name);
    const std::string directory = DirectoryOf(path);
    if (directory == m_made) return path;
    std::error_code error;
    fs::create_directories(directory, error);
    if (error)
        throw SystemFailure({.file = directory, .text = _("cannot be made"), .remedy = _(kMakeRoom)},
                            error.value());
    m_made = directory;
    return path;
}

/// A large text is not to be in memory twice; the small ones are not to take more than a host can spare.
bool Staging::TakeIntoMemory(std::size_t size) const {
    constexpr std::size_t kLargest = std::size_t{1} << 20;
    constexpr std::size_t kAll = std::size_t{64} << 20;
    if (size > kLargest || size > kAll - m_inMemory) return false;
    m_inMemory += size;
    return true;
}

void Staging::RemoveLeftOvers(const std::string& lastResort, bool mayFollowOneCutShort) {
    for (const std::string& place : PlacesOfStaging(lastResort))
        if (mayFollowOneCutShort || !IsCrowded(place)) RemoveLeftOversIn(place, place == lastResort);
}

bool Staging::HasLeftAny() noexcept {
    return Left().error != 0;
}

std::string Staging::LeftBehind() {
    const LeftDirectory& left = Left();
    if (left.path.empty()) return "";
    return Words(
        "%s: holds rendered texts and could not be removed: %s (remove it, or run the command again)",
        left.path, ReasonOf(left.error));
}

}  // namespace ZET::Deploy
