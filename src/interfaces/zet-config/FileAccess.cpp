#include "FileAccess.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "posix/ReadWrite.h"

namespace ZET {

namespace {

/// Room for what an edit adds after the text that was read: moving 10,000 lines takes 5% of a command.
constexpr std::size_t kRoomBehind = 4096;
constexpr mode_t kPrivate = S_IRUSR | S_IWUSR;
constexpr mode_t kDefault = 0666;  ///< reduced by the creation mask
constexpr mode_t kPermissions = 07777;

/// Whether an existing file is a leftover that may be overwritten.
bool IsLeftOver(const struct stat& status, const std::optional<Owner>& targetOwner) {
    // Through a hard link the text would reach a file of another name.
    if (!S_ISREG(status.st_mode) || status.st_nlink != 1) return false;
    return status.st_uid == geteuid() || (targetOwner && status.st_uid == targetOwner->user);
}

}  // namespace

bool IsFileName(const std::string& path) {
    return path.find('\0') == std::string::npos;
}

Descriptor OpenForReading(const std::string& path) {
    if (!IsFileName(path)) return Descriptor();
    return Descriptor(
        Uninterrupted([&] { return open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }));
}

Descriptor OpenForWriting(const std::string& path) {
    if (!IsFileName(path)) return Descriptor();
    constexpr int kFlags = O_WRONLY | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    Descriptor file(Uninterrupted([&] { return open(path.c_str(), kFlags, kDefault); }));
    // Anything but a regular file cannot be truncated.
    if (file.IsOpen() && Uninterrupted([&] { return ftruncate(file, 0); }) != 0) file.Close();
    return file;
}

bool FindOwner(const std::string& path, std::optional<Owner>& owner) {
    struct stat status = {};
    owner.reset();
    if (!IsFileName(path)) return false;
    if (lstat(path.c_str(), &status) != 0) return errno == ENOENT;
    if (S_ISREG(status.st_mode)) owner = OwnerOf(status);
    return true;
}

Descriptor OpenTemporary(const std::string& path, const std::optional<Owner>& targetOwner) {
    if (!IsFileName(path)) return Descriptor();
    constexpr int kFlags = O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    // The usual case: a new file is private and empty already.
    Descriptor created(Uninterrupted([&] { return open(path.c_str(), kFlags | O_EXCL, kPrivate); }));
    if (created.IsOpen() || errno != EEXIST) return created;
    Descriptor file(Uninterrupted([&] { return open(path.c_str(), kFlags, kPrivate); }));
    struct stat status = {};
    if (!file.IsOpen() || fstat(file, &status) != 0) return Descriptor();
    if (!IsLeftOver(status, targetOwner)) return Descriptor();
    // The leftover may be readable by others, or set-user-ID.
    if (Uninterrupted([&] { return fchmod(file, kPrivate); }) != 0) return Descriptor();
    if (Uninterrupted([&] { return ftruncate(file, 0); }) != 0) return Descriptor();
    return file;
}

bool ReadAll(const Descriptor& file, const struct stat& status, Buffer& bytes) {
    if (!S_ISREG(status.st_mode)) return false;
    // A file that reports its size ends there; a system file may report 0 and is read to its end.
    const auto told = static_cast<std::size_t>(status.st_size);
    bytes.Reserve(told + kRoomBehind);
    for (;;) {
        if (bytes.RoomSize() == 0) bytes.Reserve(bytes.Size() + kRoomBehind);
        const ssize_t count = ReadSome(file, bytes.Room(), bytes.RoomSize());
        if (count < 0) return false;
        if (count == 0) return true;
        bytes.Filled(static_cast<std::size_t>(count));
        if (bytes.Size() == told) return true;
    }
}

bool SetOwner(const Descriptor& file, const Owner& owner) {
    constexpr uid_t kAsItIs = static_cast<uid_t>(-1);
    const auto change = [&](uid_t user) {
        return Uninterrupted([&] { return fchown(file, user, owner.group); }) == 0;
    };
    if (change(owner.user)) return true;
    change(kAsItIs);
    return false;
}

void SetMode(const Descriptor& file, mode_t mode) {
    const mode_t mask = umask(0);
    const int before = errno;
    // Failure is ignored: a file system without modes still gets the text.
    if (Uninterrupted([&] { return fchmod(file, mode & kPermissions); }) != 0) errno = before;
    umask(mask);
}

}  // namespace ZET
