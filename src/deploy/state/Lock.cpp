#include "deploy/state/Lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Signals.h"
#include "deploy/host/Staging.h"
#include "deploy/host/Words.h"
#include "posix/CreationMask.h"
#include "posix/PathNames.h"

namespace ZET::Deploy {

namespace {

constexpr std::chrono::milliseconds kBetweenTries{50};

struct flock WholeFile() {
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return lock;
}

std::string TextOf(int descriptor) {
    char text[200] = {};
    const ssize_t length = pread(descriptor, text, sizeof text - 1, 0);
    return std::string(text, static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
}

/// An empty line after the one that names the holder says that the holder came to its end.
constexpr char kEnd = '\n';

bool NamesOneWhoEnded(int descriptor) {
    return TextOf(descriptor).ends_with(std::string("\n") + kEnd);
}

/// "process 4711 (zet-init commit-config)", as the holder wrote it into the file that it locked.
std::string HolderOf(int descriptor) {
    const std::string holder = TextOf(descriptor);
    const std::size_t end = holder.find('\n');
    // Nothing tells who holds the lock of a directory.
    return end == std::string::npos ? _("another process") : Words("process %s", holder.substr(0, end));
}

bool TryLockFile(int descriptor) {
    struct flock lock = WholeFile();
    return fcntl(descriptor, F_OFD_SETLK, &lock) == 0;
}

bool TryLockDirectory(int descriptor) {
    return flock(descriptor, LOCK_EX | LOCK_NB) == 0;
}

/// Returns false if there are no such locks, with `errno` set.
bool WaitForLock(const LockSeeker& seeker, int descriptor, const std::string& path, bool (*tryLock)(int)) {
    const auto deadline = std::chrono::steady_clock::now() + seeker.patience;
    const std::string seconds = std::to_string(seeker.patience.count()) + " s";
    for (bool isFirst = true; !tryLock(descriptor); isFirst = false) {
        if (errno != EACCES && errno != EAGAIN && errno != EINTR) return false;
        SignalGuard::Check();
        if (isFirst)
            seeker.observer.Remark(
                Words("waiting for %s, which holds %s, for %s at most", HolderOf(descriptor), path, seconds));
        if (std::chrono::steady_clock::now() >= deadline) {
            throw Failure({.file = path,
                           .text = Words("%s has held the lock for %s", HolderOf(descriptor), seconds),
                           .remedy = _("let it end, then try again")});
        }
        std::this_thread::sleep_for(kBetweenTries);
    }
    return true;
}

/// What is written into the lock file must not reach a file of another name.
void RequireOwnLockFile(int descriptor, const std::string& file) {
    struct stat status = {};
    if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == 1) return;
    throw Failure({.file = file, .text = _("is no regular file of one name"), .remedy = _("move it away")});
}

/// For whoever waits for the lock, so a failure, as on a full disk, does not matter. Writes over the former
/// name: a file that is emptied first is put on the disk at once by some file systems, which takes 3 ms a
/// command. Returns how much was written.
off_t NameHolder(const std::string& name, int descriptor) {
    const std::string holder = std::to_string(getpid()) + " (" + name + ")\n";
    const auto size = static_cast<off_t>(holder.size());
    if (ftruncate(descriptor, size) == 0 && pwrite(descriptor, holder.data(), holder.size(), 0) == size)
        return size;
    // Nothing must stay of the former holder, which may have come to its end.
    static_cast<void>(ftruncate(descriptor, 0) == 0);
    return 0;
}

Descriptor OpenLockFile(const std::string& file) {
    const CreationMask mask(kOfOwnerAlone);
    return Descriptor(
        open(file.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0600));
}

/// Returns an empty descriptor if the file cannot be opened, with `errno` set.
Descriptor Lock(const LockSeeker& seeker, const std::string& file) {
    if (!seeker.own.expired()) {
        throw Failure({.file = file,
                       .text = _("this program holds the lock already, by a plan"),
                       .remedy = _("commit the plan or let go of it, then try again")});
    }
    Descriptor lock = OpenLockFile(file);
    if (lock < 0) return lock;
    RequireOwnLockFile(lock, file);
    if (!WaitForLock(seeker, lock, file, TryLockFile)) {
        throw SystemFailure({.file = file,
                             .text = _("cannot be locked"),
                             .remedy = _("let ZET_VAR_LIB_DIR be on a file system that has locks")},
                            errno);
    }
    return lock;
}

/// Returns an empty descriptor if directories cannot be locked.
Descriptor LockDirectory(const LockSeeker& seeker, const std::string& directory) {
    Descriptor lock(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
    if (lock < 0 && errno == EACCES) {
        throw SystemFailure({.file = directory,
                             .text = _("cannot be locked"),
                             .remedy = _("let the user read the directory")},
                            errno);
    }
    const bool isLocked = lock >= 0 && WaitForLock(seeker, lock, directory, TryLockDirectory);
    return isLocked ? std::move(lock) : Descriptor();
}

bool MayOthersWrite(const std::string& directory) {
    struct stat status = {};
    return stat(directory.c_str(), &status) == 0 &&
           (status.st_uid != geteuid() || (status.st_mode & (S_IWGRP | S_IWOTH)) != 0);
}

/// Then what stands there is not a lock file, and no command takes it for one.
bool IsOfAnotherKind(int error) {
    return error == EISDIR || error == ENXIO || error == ELOOP;
}

/// Empty: that of the reason is used.
std::string RemedyToOpen(int error) {
    if (IsOfAnotherKind(error)) return _("move it away");
    if (error == ENOENT || error == ENOTDIR || error == EACCES)
        return _("create the directory ZET_VAR_LIB_DIR, or run as a user who may write there");
    return "";
}

[[noreturn]] void FailToOpen(const std::string& file) {
    const int error = errno;
    throw SystemFailure({.file = file, .text = _("cannot be opened"), .remedy = RemedyToOpen(error)}, error);
}

/// Whoever cannot open the file may only lack the right, while root holds the lock.
bool CanNobodyHold(const std::string& file, int error) {
    if (error == ENOENT || error == ENOTDIR || error == EROFS || IsOfAnotherKind(error)) return true;
    struct stat status = {};
    return geteuid() == 0 && (error == EACCES || error == EPERM) && lstat(file.c_str(), &status) != 0 &&
           errno == ENOENT;
}

}  // namespace

WriteLock::WriteLock(const StateDirectory& state, const LockSeeker& seeker)
    : m_lock(Lock(seeker, state.Lock())) {
    if (m_lock < 0) FailToOpen(state.Lock());
    TakeOver(seeker);
}

WriteLock::WriteLock(const StateDirectory& state, const LockSeeker& seeker, const std::string& path)
    : m_lock(Lock(seeker, state.Lock())) {
    if (!IsProducts() && errno != EACCES && errno != EROFS && errno != ENOENT && errno != ENOTDIR)
        FailToOpen(state.Lock());
    if (IsProducts()) TakeOver(seeker);
    const std::string directory = DirectoryOf(path);
    if (!IsProducts() || MayOthersWrite(directory)) m_directoryLock = LockDirectory(seeker, directory);
}

/// A holder that leaves something behind leaves it to the next one, as if it had been cut short.
WriteLock::~WriteLock() {
    if (m_namedSize > 0 && !Staging::HasLeftAny())
        static_cast<void>(pwrite(m_lock, &kEnd, sizeof kEnd, m_namedSize) == 0);
}

void WriteLock::TakeOver(const LockSeeker& seeker) {
    m_mayFollowOneCutShort = !NamesOneWhoEnded(m_lock);
    m_namedSize = NameHolder(seeker.name, m_lock);
    m_life = std::make_shared<char>();
}

std::unique_ptr<WriteLock> LockToGoBack(const StateDirectory& state, const LockSeeker& seeker) {
    try {
        return std::make_unique<WriteLock>(state, seeker);
    } catch (const Failure& failure) {
        if (!CanNobodyHold(state.Lock(), failure.ErrorNumber())) throw;
        seeker.observer.Warning(Words(
            "%s; the files go back all the same, and other commands are not kept away", failure.what()));
        return nullptr;
    }
}

}  // namespace ZET::Deploy
