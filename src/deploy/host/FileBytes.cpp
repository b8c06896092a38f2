#include "deploy/host/FileBytes.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "posix/ByteBlock.h"
#include "posix/Descriptor.h"
#include "posix/ReadWrite.h"

namespace ZET::Deploy {

namespace {

constexpr mode_t kModeBits = 07777;
constexpr std::size_t kBlock = std::size_t{128} << 10;
constexpr auto kAsItIs = static_cast<uid_t>(-1);  // of an owner or a group

[[noreturn]] void Fail(const std::string& path, const char* what) {
    const int error = errno;
    throw SystemFailure({.file = path, .text = what}, error);
}

struct stat OpenedStatus(int descriptor, const std::string& path) {
    struct stat status = {};
    if (descriptor < 0 && errno == ENOENT)
        throw Failure(
            {.file = path, .text = _("does not exist"), .remedy = _("create it, or correct the path")},
            ENOENT);
    if (descriptor < 0 || fstat(descriptor, &status) != 0) Fail(path, _("cannot be read"));
    if (S_ISDIR(status.st_mode))
        throw Failure({.file = path, .text = _("is a directory"), .remedy = _("name a file in it")});
    if (!S_ISREG(status.st_mode))
        throw Failure({.file = path, .text = _("is no regular file"), .remedy = _("name a regular file")});
    return status;
}

int OpenToRead(const std::string& path) {
    return open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
}

/// How much of a file is read at once.
std::size_t RoomFor(const struct stat& status) {
    return std::min(kBlock, static_cast<std::size_t>(status.st_size) + 1);
}

/// The size of a file that tells it: who has read so much need not ask for more.
std::size_t SizeTold(const struct stat& status) {
    return status.st_size > 0 ? static_cast<std::size_t>(status.st_size) : SIZE_MAX;
}

/// Fills `block` from `start` on, as far as the file reaches, or until `enough` is read; returns how much of
/// it is filled then.
std::size_t ReadBlock(int descriptor, const std::string& path, std::span<char> block, std::size_t start = 0,
                      std::size_t enough = SIZE_MAX) {
    while (start < block.size() && start != enough) {
        const ssize_t count = ReadSome(descriptor, block.data() + start, block.size() - start);
        if (count == 0) break;
        if (count < 0) Fail(path, _("cannot be read"));
        start += static_cast<std::size_t>(count);
    }
    return start;
}

/// Memory that is not filled before it is read into. Much of it comes in huge pages, the first touch of which
/// costs less than that of many small ones: 220 page faults instead of 1,540 where a template is one line of
/// 5 MB, and a tenth of the command's time less.
class ChunkRoom {
  public:
    static constexpr std::size_t kMuch = std::size_t{8} << 20;

    explicit ChunkRoom(std::size_t size) { Grow(size); }

    std::span<char> Bytes() const { return {m_bytes.get(), m_size}; }
    std::string_view First(std::size_t count) const { return {m_bytes.get(), count}; }

    /// Keeps what stands there from `begin` to the end of the room, and has it begin the room.
    void KeepFrom(std::size_t begin) { std::memmove(m_bytes.get(), m_bytes.get() + begin, m_size - begin); }

    /// Keeps what stands there.
    void Grow(std::size_t size) {
        std::unique_ptr<char, Free> bytes(static_cast<char*>(Allocate(size)));
        if (bytes == nullptr) throw std::bad_alloc();
        if (m_size > 0) std::memcpy(bytes.get(), m_bytes.get(), std::min(m_size, size));
        m_bytes = std::move(bytes);
        m_size = size;
    }

  private:
    struct Free {
        void operator()(char* bytes) const { std::free(bytes); }
    };

    static void* Allocate(std::size_t size) {
        constexpr std::size_t kHugePage = std::size_t{2} << 20;
        if (size < kHugePage) return std::malloc(size);
        const std::size_t rounded = (size + kHugePage - 1) / kHugePage * kHugePage;
        void* const bytes = std::aligned_alloc(kHugePage, rounded);
        if (bytes != nullptr) madvise(bytes, rounded, MADV_HUGEPAGE);
        return bytes;
    }

    std::unique_ptr<char, Free> m_bytes;
    std::size_t m_size = 0;
};

/// Few steps to a very long line, and none beyond the file's end.
std::size_t SizeForLine(std::size_t begun, const struct stat& status) {
    const std::size_t wanted = std::max(begun * 4, ChunkRoom::kMuch);
    const std::size_t whole = static_cast<std::size_t>(status.st_size) + 1;
    return whole > begun * 2 ? std::min(wanted, whole) : wanted;
}

std::string ReadAll(int descriptor, const std::string& path, const struct stat& status) {
    std::string bytes(static_cast<std::size_t>(status.st_size) + 1, '\0');
    std::size_t length = 0;
    while ((length = ReadBlock(descriptor, path, bytes, length, SizeTold(status))) == bytes.size())
        bytes.resize(bytes.size() * 2);
    bytes.resize(length);
    return bytes;
}

/// An ordinary user may not give files away: the file then shows whose it will be.
void GiveOwner(int descriptor, const std::string& path, uid_t owner, gid_t group, mode_t mode) {
    for (const auto& [newOwner, newGroup] : {std::pair{owner, kAsItIs}, std::pair{kAsItIs, group}}) {
        if (fchown(descriptor, newOwner, newGroup) != 0 && errno != EPERM && errno != EINVAL)
            Fail(path, _("cannot get its owner"));
    }
    // After the owner: a change of owner drops the set-user bits.
    if (fchmod(descriptor, mode & kModeBits) != 0) Fail(path, _("cannot get its mode"));
}

bool IsOwn(const struct stat& status) {
    return S_ISREG(status.st_mode) && status.st_nlink == 1 && status.st_uid == geteuid();
}

[[noreturn]] void FailOfOther(const std::string& path) {
    throw Failure({.file = path, .text = _("is in the way, and not from here"), .remedy = _("move it away")});
}

/// A former one whose mode keeps this user from writing it makes way for a new one.
bool RemoveReadOnly(const std::string& path) {
    struct stat status = {};
    return errno == EACCES && lstat(path.c_str(), &status) == 0 && IsOwn(status) && unlink(path.c_str()) == 0;
}

/// A new file, or a former one of this user's that has no other name, emptied.
Descriptor OpenStaged(const std::string& path) {
    constexpr int kFlags = O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    const auto openIt = [&] { return Descriptor(open(path.c_str(), kFlags, S_IRUSR | S_IWUSR)); };
    Descriptor file = openIt();
    if (file < 0 && RemoveReadOnly(path)) file = openIt();
    struct stat status = {};
    if (file < 0 || fstat(file, &status) != 0) Fail(path, _("cannot be written"));
    if (!IsOwn(status)) FailOfOther(path);
    if (ftruncate(file, 0) != 0) Fail(path, _("cannot be written"));
    return file;
}

}  // namespace

std::string ReadFileBytes(const std::string& path) {
    Descriptor descriptor;
    return ReadFileBytes(path, descriptor);
}

std::string ReadFileBytes(const std::string& path, Descriptor& opened) {
    opened.Reset(OpenToRead(path));
    return ReadAll(opened, path, OpenedStatus(opened, path));
}

std::string ReadFileHead(const std::string& path, std::size_t size) {
    const Descriptor descriptor(OpenToRead(path));
    const auto known = static_cast<std::size_t>(OpenedStatus(descriptor, path).st_size);
    // A file of the system's own does not tell its size.
    std::string head(known == 0 ? size : std::min(size, known), '\0');
    head.resize(ReadBlock(descriptor, path, head));
    return head;
}

void RequireReadableFile(const std::string& path) {
    const Descriptor descriptor(OpenToRead(path));
    OpenedStatus(descriptor, path);
}

FileVersion VersionIn(int directory, const std::string& name, const std::string& path) {
    struct stat status = {};
    if (fstatat(directory, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno == ENOENT || errno == ENOTDIR) return {};
        Fail(path, _("cannot be looked at"));
    }
    return VersionFrom(status);
}

FileVersion VersionFrom(const struct stat& status) {
    constexpr std::int64_t kSecond = 1'000'000'000;
    return {status.st_dev, status.st_ino, status.st_size,
            status.st_ctim.tv_sec * kSecond + status.st_ctim.tv_nsec};
}

FileVersion VersionOf(const std::string& path) {
    return VersionIn(AT_FDCWD, path, path);
}

void ReadChunks(const std::string& path, const std::function<void(std::string_view lines)>& take) {
    const Descriptor descriptor(OpenToRead(path));
    const struct stat status = OpenedStatus(descriptor, path);
    ChunkRoom room(RoomFor(status));
    const std::size_t enough = SizeTold(status) < room.Bytes().size() ? SizeTold(status) : SIZE_MAX;
    std::size_t begun = 0;  // how much of the room is a line that is not read to its end
    for (;;) {
        const std::size_t size = room.Bytes().size();
        const std::size_t count = ReadBlock(descriptor, path, room.Bytes(), begun, enough);
        if (count < size) {
            if (count > 0) take(room.First(count));
            return;
        }
        const std::size_t end = SizeOfWholeLines(room.First(size));
        if (end > 0) take(room.First(end));
        begun = size - end;
        room.KeepFrom(end);
        if (begun > size / 2) room.Grow(SizeForLine(begun, status));
    }
}

bool HaveSameBytes(const std::string& one, const std::string& other) {
    const Descriptor oneFile(OpenToRead(one));
    const struct stat status = OpenedStatus(oneFile, one);
    const Descriptor otherFile(OpenToRead(other));
    if (OpenedStatus(otherFile, other).st_size != status.st_size) return false;
    const ChunkRoom oneRoom(RoomFor(status));
    const ChunkRoom otherRoom(RoomFor(status));
    for (;;) {
        const std::size_t count = ReadBlock(oneFile, one, oneRoom.Bytes(), 0, SizeTold(status));
        if (ReadBlock(otherFile, other, otherRoom.Bytes(), 0, SizeTold(status)) != count) return false;
        if (oneRoom.First(count) != otherRoom.First(count)) return false;
        if (count < oneRoom.Bytes().size()) return true;
    }
}

bool HoldsBytes(const std::string& path, std::string_view bytes) {
    const Descriptor file(OpenToRead(path));
    const struct stat status = OpenedStatus(file, path);
    if (status.st_size > 0 && static_cast<std::size_t>(status.st_size) != bytes.size()) return false;
    const ChunkRoom room(RoomFor(status));
    for (std::string_view left = bytes;;) {
        const std::size_t count = ReadBlock(file, path, room.Bytes(), 0, SizeTold(status));
        if (!left.starts_with(room.First(count))) return false;
        left.remove_prefix(count);
        if (count < room.Bytes().size()) return left.empty();
    }
}

bool HoldsBytes(int descriptor, const std::string& path, std::string_view bytes) {
    const ChunkRoom room(std::min(kBlock, bytes.size() + 1));
    for (std::size_t done = 0;;) {
        const ssize_t count = Uninterrupted([&] {
            return pread(descriptor, room.Bytes().data(), room.Bytes().size(), static_cast<off_t>(done));
        });
        if (count < 0) Fail(path, _("cannot be read"));
        if (count == 0) return done == bytes.size();
        const std::string_view read = room.First(static_cast<std::size_t>(count));
        if (!bytes.substr(done).starts_with(read)) return false;
        done += read.size();
    }
}

mode_t ModeOf(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) Fail(path, _("its mode cannot be read"));
    return status.st_mode & kModeBits;
}

void RequireMode(int descriptor, const std::string& path, mode_t mode) {
    struct stat status = {};
    if ((descriptor >= 0 ? fstat(descriptor, &status) : lstat(path.c_str(), &status)) != 0)
        Fail(path, _("its mode cannot be read"));
    if ((status.st_mode & kModeBits) == (mode & kModeBits)) return;
    errno = EACCES;
    if (descriptor < 0 || fchmod(descriptor, mode & kModeBits) != 0) Fail(path, _("cannot get its mode"));
}

void RequireModeOf(const std::string& model, const std::string& staged) {
    const mode_t mode = ModeOf(model);
    struct stat status = {};
    if (lstat(staged.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
        (status.st_mode & kModeBits) == mode)
        return;
    const Descriptor descriptor(open(staged.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    RequireMode(descriptor, staged, mode);
}

void WriteStagedFile(const std::string& path, std::string_view bytes, mode_t mode) {
    const Descriptor descriptor = OpenStaged(path);
    if (!WriteAll(descriptor, bytes)) Fail(path, _("cannot be written"));
    if (fchmod(descriptor, mode & kModeBits) != 0) Fail(path, _("cannot get its mode"));
}

void CopyIntoStaging(const std::string& from, const std::string& to) {
    const Descriptor source(OpenToRead(from));
    const struct stat status = OpenedStatus(source, from);
    const Descriptor copy = OpenStaged(to);
    if (!WriteAll(copy, ReadAll(source, from, status))) Fail(to, _("cannot be written"));
    GiveOwner(copy, to, status.st_uid, status.st_gid, status.st_mode);
}

void GiveStagedFile(const std::string& path, uid_t owner, gid_t group) {
    const Descriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    GiveOwner(file, path, owner, group, OpenedStatus(file, path).st_mode);
}

}  // namespace ZET::Deploy
