#include "FileCopy.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <vector>

#include "Attributes.h"
#include "Descriptor.h"
#include "Message.h"
#include "Sync.h"

namespace ZET {

namespace {

constexpr mode_t kPermissions = 07777;

bool WriteAll(int descriptor, const char* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t written = TEMP_FAILURE_RETRY(::write(descriptor, bytes, size));
        if (written < 0) return false;
        bytes += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

/// False, with `errno`, on failure. The kernel copies what it can; where that ends too early (another file
/// system, a file that does not tell its size), reading and writing goes on from there.
bool CopyBytes(int from, int to) {
    constexpr std::size_t kStep = std::size_t{1} << 30;
    while (::copy_file_range(from, nullptr, to, nullptr, kStep, 0) > 0) {
    }
    std::vector<char> buffer(std::size_t{1} << 16);
    while (true) {
        const ssize_t size = TEMP_FAILURE_RETRY(::read(from, buffer.data(), buffer.size()));
        if (size < 0) return false;
        if (size == 0) return true;
        if (!WriteAll(to, buffer.data(), static_cast<std::size_t>(size))) return false;
    }
}

int CreateCopy(const std::string& copy) {
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    const int number = ::open(copy.c_str(), kFlags, S_IRUSR | S_IWUSR);
    if (number >= 0 || errno != EEXIST) return number;
    struct stat status;
    if (::lstat(copy.c_str(), &status) != 0) return -1;
    if (!S_ISREG(status.st_mode) || status.st_nlink != 1) {
        errno = EEXIST;
        return -1;
    }
    if (::unlink(copy.c_str()) != 0) return -1;
    return ::open(copy.c_str(), kFlags, S_IRUSR | S_IWUSR);
}

/// Removes the copy unless it was completed.
class CopyGuard {
  public:
    explicit CopyGuard(const std::string& path) : m_path(path) {}
    ~CopyGuard() {
        if (!m_isComplete) ::unlink(m_path.c_str());
    }
    CopyGuard(const CopyGuard&) = delete;
    CopyGuard& operator=(const CopyGuard&) = delete;
    void SetComplete() { m_isComplete = true; }

  private:
    const std::string& m_path;
    bool m_isComplete = false;
};

}  // namespace

void MakeDurableCopy(const std::string& from, const std::string& to, const std::string& copy) {
    const auto fail = [&] { Fail("Failed to copy file '%s' to '%s': %m.", from.c_str(), to.c_str()); };
    const Descriptor source(::open(from.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status;
    if (!source.IsOpen() || ::fstat(source.Number(), &status) != 0) fail();
    if (!S_ISREG(status.st_mode))
        Fail("Failed to copy file '%s' to '%s': not a regular file.", from.c_str(), to.c_str());
    Descriptor target(CreateCopy(copy));
    if (!target.IsOpen())
        Fail("Failed to copy file '%s' to '%s': '%s': %m.", from.c_str(), to.c_str(), copy.c_str());
    CopyGuard guard(copy);
    if (!CopyBytes(source.Number(), target.Number())) fail();
    if (::fchmod(target.Number(), status.st_mode & kPermissions) != 0) fail();
    struct stat copied;
    if (::fstat(target.Number(), &copied) != 0) fail();
    TakeOverAttributes({from, status}, {copy, copied});
    SyncFile(target, copy);
    if (!target.Close()) fail();
    guard.SetComplete();
}

}  // namespace ZET
