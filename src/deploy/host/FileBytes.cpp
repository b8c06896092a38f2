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
#include "deploy/host/FileState.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "posix/ByteBlock.h"
#include "posix/Descriptor.h"
#include "posix/ModeBits.h"
#include "posix/ReadWrite.h"

namespace ZET::Deploy {

namespace {

constexpr std::size_t kBlock = std::size_t{128} << 10;
constexpr std::size_t kSmallBlock = std::size_t{32} << 10;  ///< fits on the stack

int OpenToRead(const std::string& path) {
    return open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
}

/// How much of a file is read at once.
std::size_t RoomFor(const struct stat& status) {
    return std::min(kBlock, static_cast<std::size_t>(status.st_size) + 1);
}

/// The size of a file that reports one: after so many bytes, no more need be read. Else SIZE_MAX.
std::size_t SizeTold(const struct stat& status) {
    return status.st_size > 0 ? static_cast<std::size_t>(status.st_size) : SIZE_MAX;
}

/// Fills `block` from `start` on, until the file ends or `enough` bytes are read; returns how much of it is
/// then filled.
std::size_t ReadBlock(int descriptor, const std::string& path, std::span<char> block, std::size_t start = 0,
                      std::size_t enough = SIZE_MAX) {
    while (start < block.size() && start != enough) {
        const ssize_t count = ReadSome(descriptor, block.data() + start, block.size() - start);
        if (count == 0) break;
        if (count < 0) FailOfCall(path, _("cannot be read"));
        start += static_cast<std::size_t>(count);
    }
    return start;
}

/// Memory that is not initialised before it is read into. Large blocks come in huge pages, whose first touch
/// costs less than that of many small ones: 220 page faults instead of 1,540 for a template that is one line
/// of 5 MB, and a tenth of the command's time less.
class ChunkRoom {
  public:
    static constexpr std::size_t kMuch = std::size_t{8} << 20;

    explicit ChunkRoom(std::size_t size) { Grow(size); }

    std::span<char> Bytes() const { return {m_bytes.get(), m_size}; }
    std::string_view First(std::size_t count) const { return {m_bytes.get(), count}; }

    /// Moves the bytes from `begin` to the end of the room to its beginning.
    void KeepFrom(std::size_t begin) { std::memmove(m_bytes.get(), m_bytes.get() + begin, m_size - begin); }

    /// Keeps the bytes that are there.
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

/// Reaches a very long line in few steps, and does not go beyond the file's end.
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

}  // namespace

std::string ReadFileBytes(const std::string& path) {
    Descriptor descriptor;
    return ReadFileBytes(path, descriptor);
}

std::string ReadFileBytes(const std::string& path, Descriptor& opened) {
    opened.Reset(OpenToRead(path));
    return ReadAll(opened, path, StatusOfReadable(opened, path));
}

std::string ReadFileBytes(const std::string& path, mode_t& mode) {
    const Descriptor opened(OpenToRead(path));
    const struct stat status = StatusOfReadable(opened, path);
    mode = status.st_mode & kModeBits;
    return ReadAll(opened, path, status);
}

std::string ReadFileHead(const std::string& path, std::size_t size) {
    const Descriptor descriptor(OpenToRead(path));
    const auto known = static_cast<std::size_t>(StatusOfReadable(descriptor, path).st_size);
    // Some of the system's own files report no size.
    std::string head(known == 0 ? size : std::min(size, known), '\0');
    head.resize(ReadBlock(descriptor, path, head));
    return head;
}

void RefuseLinkToNothing(const std::string& name) {
    struct stat status = {};
    if (lstat(name.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return;
    throw Failure(ProblemOfLinkToNothing(name), ENOENT);
}

struct stat StatusOfReadable(int descriptor, const std::string& path) {
    struct stat status = {};
    if (descriptor < 0 && errno == ENOENT) {
        RefuseLinkToNothing(path);
        throw Failure(
            {.file = path, .text = _("does not exist"), .remedy = _("create it, or correct the path")},
            ENOENT);
    }
    if (descriptor < 0 || fstat(descriptor, &status) != 0) FailOfCall(path, _("cannot be read"));
    if (S_ISDIR(status.st_mode))
        throw Failure({.file = path, .text = _("is a directory"), .remedy = _("name a file in it")});
    if (!S_ISREG(status.st_mode))
        throw Failure({.file = path, .text = _("is no regular file"), .remedy = _("name a regular file")});
    return status;
}

void RequireReadableFile(const std::string& path) {
    const Descriptor descriptor(OpenToRead(path));
    StatusOfReadable(descriptor, path);
}

void ReadChunks(const std::string& path, const std::function<void(std::string_view lines)>& take) {
    const Descriptor descriptor(OpenToRead(path));
    const struct stat status = StatusOfReadable(descriptor, path);
    ChunkRoom room(RoomFor(status));
    const std::size_t enough = SizeTold(status) < room.Bytes().size() ? SizeTold(status) : SIZE_MAX;
    std::size_t begun = 0;  // how much of the room is a line that is not complete yet
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
    const struct stat status = StatusOfReadable(oneFile, one);
    const Descriptor otherFile(OpenToRead(other));
    if (StatusOfReadable(otherFile, other).st_size != status.st_size) return false;
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
    const struct stat status = StatusOfReadable(file, path);
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
    char block[kSmallBlock];
    for (std::size_t done = 0;;) {
        // One byte more than is left, so that a longer file shows without another call.
        const std::size_t wanted = std::min(sizeof block, bytes.size() - done + 1);
        const ssize_t count =
            Uninterrupted([&] { return pread(descriptor, block, wanted, static_cast<off_t>(done)); });
        if (count < 0) FailOfCall(path, _("cannot be read"));
        const std::string_view read(block, static_cast<std::size_t>(count));
        if (!bytes.substr(done).starts_with(read)) return false;
        done += read.size();
        if (read.empty() || (done == bytes.size() && read.size() < wanted)) return done == bytes.size();
    }
}

}  // namespace ZET::Deploy
