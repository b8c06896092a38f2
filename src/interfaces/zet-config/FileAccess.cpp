#include "FileAccess.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace ZET {

namespace {

/// Repeats a call that a signal interrupted.
template <typename Call>
auto Uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

constexpr std::size_t kReadAhead = 4096;
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

void FileDescriptor::Close() {
    if (m_descriptor >= 0) close(std::exchange(m_descriptor, -1));
}

FileDescriptor OpenForReading(const std::string& path) {
    if (!IsFileName(path)) return FileDescriptor(-1);
    return FileDescriptor(
        Uninterrupted([&] { return open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }));
}

FileDescriptor OpenForWriting(const std::string& path) {
    if (!IsFileName(path)) return FileDescriptor(-1);
    constexpr int kFlags = O_WRONLY | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    FileDescriptor file(Uninterrupted([&] { return open(path.c_str(), kFlags, kDefault); }));
    // What is no regular file cannot be emptied.
    if (file.IsOpen() && Uninterrupted([&] { return ftruncate(file.Get(), 0); }) != 0) file.Close();
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

FileDescriptor OpenTemporary(const std::string& path, const std::optional<Owner>& targetOwner) {
    if (!IsFileName(path)) return FileDescriptor(-1);
    constexpr int kFlags = O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    // The usual case: a new file is private and empty without more ado.
    FileDescriptor created(Uninterrupted([&] { return open(path.c_str(), kFlags | O_EXCL, kPrivate); }));
    if (created.IsOpen() || errno != EEXIST) return created;
    FileDescriptor file(Uninterrupted([&] { return open(path.c_str(), kFlags, kPrivate); }));
    struct stat status = {};
    if (!file.IsOpen() || fstat(file.Get(), &status) != 0) return FileDescriptor(-1);
    if (!IsLeftOver(status, targetOwner)) return FileDescriptor(-1);
    // It may have been readable by others, or runnable with its owner's rights.
    if (Uninterrupted([&] { return fchmod(file.Get(), kPrivate); }) != 0) return FileDescriptor(-1);
    if (Uninterrupted([&] { return ftruncate(file.Get(), 0); }) != 0) return FileDescriptor(-1);
    return file;
}

bool ReadAll(const FileDescriptor& file, const struct stat& status, Buffer& bytes) {
    if (!S_ISREG(status.st_mode)) return false;
    // One byte more than the size: the read that fills it finds the end of the file too.
    bytes.Reserve(static_cast<std::size_t>(status.st_size) + 1);
    for (;;) {
        if (bytes.RoomSize() == 0) bytes.Reserve(bytes.Size() + kReadAhead);
        const ssize_t count = Uninterrupted([&] { return read(file.Get(), bytes.Room(), bytes.RoomSize()); });
        if (count < 0) return false;
        if (count == 0) return true;
        bytes.Filled(static_cast<std::size_t>(count));
    }
}

bool WriteAll(const FileDescriptor& file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = Uninterrupted([&] { return write(file.Get(), bytes.data(), bytes.size()); });
        // None at all, and no error: a file system that would have it tried for ever.
        if (count <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

bool SetOwner(const FileDescriptor& file, const Owner& owner) {
    constexpr uid_t kAsItIs = static_cast<uid_t>(-1);
    const auto change = [&](uid_t user) {
        return Uninterrupted([&] { return fchown(file.Get(), user, owner.group); }) == 0;
    };
    if (change(owner.user)) return true;
    change(kAsItIs);
    return false;
}

void SetMode(const FileDescriptor& file, mode_t mode) {
    const mode_t mask = umask(0);
    const int before = errno;
    // The result does not matter to the caller: a file system that knows no modes still gets the text.
    if (Uninterrupted([&] { return fchmod(file.Get(), mode & kPermissions); }) != 0) errno = before;
    umask(mask);
}

}  // namespace ZET
