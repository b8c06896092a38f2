#include "Lock.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

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
    const bool isHeld = fcntl(descriptor, F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
    return isHeld ? "process " + std::to_string(lock.l_pid) : "another process";
}

bool TryLock(int descriptor) {
    struct flock lock = WholeFile();
    return fcntl(descriptor, F_SETLK, &lock) == 0;
}

void WaitForLock(int descriptor, const std::string& file) {
    const auto deadline = std::chrono::steady_clock::now() + kLongestWait;
    while (!TryLock(descriptor)) {
        if (errno != EACCES && errno != EAGAIN && errno != EINTR) {
            throw Failure(file + ": cannot be locked: " + std::strerror(errno) +
                          " (let ZET_VAR_LIB_DIR be on a file system that has locks)");
        }
        SignalGuard::Check();
        if (std::chrono::steady_clock::now() >= deadline) {
            throw Failure(file + ": " + HolderOf(descriptor) + " has held the lock for " +
                          std::to_string(kLongestWait.count()) + " s (let it end, then try again)");
        }
        std::this_thread::sleep_for(kBetweenTries);
    }
}

}  // namespace

WriteLock::WriteLock(Session& session, Need need) {
    const std::string file = session.Param("ZET_VAR_LIB_DIR") + "/zet.lock";
    m_descriptor = open(file.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600);
    if (m_descriptor < 0) {
        if (need == Need::IfPermitted && (errno == EACCES || errno == EROFS || errno == ENOENT)) return;
        throw Failure(file + ": cannot be opened: " + std::strerror(errno) +
                      " (create the directory ZET_VAR_LIB_DIR, or run as a user who may write there)");
    }
    try {
        WaitForLock(m_descriptor, file);
    } catch (...) {
        close(m_descriptor);
        throw;
    }
}

WriteLock::~WriteLock() {
    if (m_descriptor >= 0) close(m_descriptor);
}

}  // namespace ZET
