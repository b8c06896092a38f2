#include "FileAccess.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "posix/ReadWrite.h"

namespace ZET {

namespace {

/// What an edit adds finds room behind the text that was read: to move 10,000 lines takes 5% of a command.
constexpr std::size_t kRoomBehind = 4096;
constexpr mode_t kPrivate = S_IRUSR | S_IWUSR;
constexpr mode_t kDefault = 0666;  ///< less what the creation mask takes
constexpr mode_t kPermissions = 07777;

/// Whether a file that was there already may be taken for a left-over, and be written.
bool IsLeftOver(const struct stat& status, const std::optional<Owner>& targetOwner) {
    // A hard link would let the text reach a file of another name.
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
    // What is no regular file cannot be emptied.
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
    // The usual case: a new file is private and empty without more ado.
    Descriptor created(Uninterrupted([&] { return open(path.c_str(), kFlags | O_EXCL, kPrivate); }));
    if (created.IsOpen() || errno != EEXIST) return created;
    Descriptor file(Uninterrupted([&] { return open(path.c_str(), kFlags, kPrivate); }));
    struct stat status = {};
    if (!file.IsOpen() || fstat(file, &status) != 0) return Descriptor();
    if (!IsLeftOver(status, targetOwner)) return Descriptor();
    // It may have been readable by others, or runnable with its owner's rights.
    if (Uninterrupted([&] { return fchmod(file, kPrivate); }) != 0) return Descriptor();
    if (Uninterrupted([&] { return ftruncate(file, 0); }) != 0) return Descriptor();
    return file;
}

bool ReadAll(const Descriptor& file, const struct stat& status, Buffer& bytes) {
    if (!S_ISREG(status.st_mode)) return false;
    // A file that tells its size ends there; one of the system's own tells none, and is read to its end.
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
    // The result does not matter to the caller: a file system that knows no modes still gets the text.
    if (Uninterrupted([&] { return fchmod(file, mode & kPermissions); }) != 0) errno = before;
    umask(mask);
}

}  // namespace ZET
