#include "Lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>
#include <utility>

#include "ExitStatus.h"
#include "Signals.h"

namespace ZET {

namespace {

constexpr std::chrono::seconds kLongestWait{30};
constexpr std::chrono::milliseconds kBetweenTries{50};

struct flock WholeFile() {
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return lock;
}

std::string HolderOf(int descriptor) {
    struct flock lock = WholeFile();
    // Nobody tells who holds the lock of a directory.
    const bool isHeld = fcntl(descriptor, F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
    return isHeld ? "process " + std::to_string(lock.l_pid) : "another process";
}

bool TryLockFile(int descriptor) {
    struct flock lock = WholeFile();
    return fcntl(descriptor, F_SETLK, &lock) == 0;
}

bool TryLockDirectory(int descriptor) {
    return flock(descriptor, LOCK_EX | LOCK_NB) == 0;
}

/// False when there are no such locks, as `errno` says.
bool WaitForLock(int descriptor, const std::string& path, bool (*tryLock)(int)) {
    const auto deadline = std::chrono::steady_clock::now() + kLongestWait;
    while (!tryLock(descriptor)) {
        if (errno != EACCES && errno != EAGAIN && errno != EINTR) return false;
        SignalGuard::Check();
        if (std::chrono::steady_clock::now() >= deadline) {
            throw Failure(path + ": " + HolderOf(descriptor) + " has held the lock for " +
                          std::to_string(kLongestWait.count()) + " s (let it end, then try again)");
        }
        std::this_thread::sleep_for(kBetweenTries);
    }
    return true;
}

std::string LockFileOf(Session& session) {
    return session.Param("ZET_VAR_LIB_DIR") + "/zet.lock";
}

/// Without its file: none, as `errno` says.
OwnedDescriptor Lock(const std::string& file) {
    OwnedDescriptor lock(open(file.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600));
    if (lock < 0 || WaitForLock(lock, file, TryLockFile)) return lock;
    throw Failure(file + ": cannot be locked: " + std::strerror(errno) +
                  " (let ZET_VAR_LIB_DIR be on a file system that has locks)");
}

/// None where directories cannot be locked.
OwnedDescriptor LockDirectory(const std::string& directory) {
    OwnedDescriptor lock(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
    if (lock < 0 && errno == EACCES) {
        throw Failure(directory + ": cannot be locked: " + std::strerror(errno) +
                      " (let the user read the directory)");
    }
    return lock >= 0 && WaitForLock(lock, directory, TryLockDirectory) ? std::move(lock) : OwnedDescriptor();
}

bool MayOthersWrite(const std::string& directory) {
    struct stat status = {};
    return stat(directory.c_str(), &status) == 0 &&
           (status.st_uid != geteuid() || (status.st_mode & (S_IWGRP | S_IWOTH)) != 0);
}

[[noreturn]] void FailToOpen(const std::string& file) {
    throw Failure(file + ": cannot be opened: " + std::strerror(errno) +
                  " (create the directory ZET_VAR_LIB_DIR, or run as a user who may write there)");
}

}  // namespace

WriteLock::WriteLock(Session& session) : m_lock(Lock(LockFileOf(session))) {
    if (m_lock < 0) FailToOpen(LockFileOf(session));
}

WriteLock::WriteLock(Session& session, const std::string& path) : m_lock(Lock(LockFileOf(session))) {
    if (!IsProducts() && errno != EACCES && errno != EROFS && errno != ENOENT)
        FailToOpen(LockFileOf(session));
    const std::string directory = DirectoryOf(path);
    if (!IsProducts() || MayOthersWrite(directory)) m_directoryLock = LockDirectory(directory);
}

}  // namespace ZET
