#include "zet/ZETFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <optional>
#include <utility>

#include "Attributes.h"
#include "Descriptor.h"
#include "FileCopy.h"
#include "Message.h"
#include "Printable.h"
#include "Sync.h"
#include "zet/ZETErrors.h"
#include "zet/ZETFormat.h"
#include "zet/ZETHost.h"

namespace ZET {

namespace {

ZETRenameGuard& RenameGuard() {
    static ZETRenameGuard guard;
    return guard;
}

/// The system would take the part of a path before a NUL byte for the whole.
void RequirePath(const std::string& path, const char* operation) {
    RequireNotEmpty(path, operation);
    if (path.find('\0') != std::string::npos)
        FailCheck("File name '%s' holds a NUL byte.", Printable(path).c_str());
}

/// Whether there is a regular file at the end of `path`. A link that leads nowhere is none.
bool StateRegularFile(const std::string& path, struct stat& status) {
    if (::stat(path.c_str(), &status) == 0) return S_ISREG(status.st_mode);
    if (errno != ENOENT && errno != ENOTDIR && errno != ELOOP)
        Fail("Failed to check file '%s': %m.", path.c_str());
    return false;
}

/// `from` is about to become `to`: the file's new text. For its readers it stays the file that it was.
void TakeOverFromFormerFile(const std::string& from, const std::string& to, const struct stat& status) {
    struct stat former;
    if (StateRegularFile(to, former)) {
        TakeOverAttributes({to, former}, {from, status});
        return;
    }
    const std::string reserve = to + ZETReserveSuffix;
    if (StateRegularFile(reserve, former)) TakeOverAttributes({reserve, former}, {from, status});
}

/// True when the file is new.
bool CreateOrEmpty(const std::string& path, Descriptor& file) {
    constexpr int kFlags = O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    constexpr mode_t kMode = 0666;
    file.Reset(::open(path.c_str(), kFlags | O_CREAT | O_EXCL, kMode));
    if (file.IsOpen()) return true;
    if (errno == EEXIST) file.Reset(::open(path.c_str(), kFlags));
    struct stat status;
    if (!file.IsOpen() || ::fstat(file.Number(), &status) != 0)
        Fail("Failed to create file '%s': %m.", path.c_str());
    if (!S_ISREG(status.st_mode)) Fail("Failed to create file '%s': not a regular file.", path.c_str());
    if (::ftruncate(file.Number(), 0) != 0) Fail("Failed to create file '%s': %m.", path.c_str());
    return false;
}

}  // namespace

void SetRenameGuard(ZETRenameGuard guard) {
    RenameGuard() = std::move(guard);
}

void CreateFile(const std::string& path) {
    RequirePath(path, "CreateFile");
    const ParentDirectory directory(path);
    Descriptor file;
    const bool isNew = CreateOrEmpty(path, file);
    try {
        SyncFile(file, path);
        directory.Sync();
    } catch (const EZETError&) {
        if (isNew) ::unlink(path.c_str());
        throw;
    }
}

void RemoveFile(const std::string& path) {
    RequirePath(path, "RemoveFile");
    const ParentDirectory directory(path);
    if (::unlink(path.c_str()) != 0) Fail("Failed to remove file '%s': %m.", path.c_str());
    directory.Sync();
}

void RenameFile(const std::string& from, const std::string& to) {
    RequirePath(from, "RenameFile");
    RequirePath(to, "RenameFile");
    if (const ZETRenameGuard& guard = RenameGuard()) guard(from, to);
    struct stat status;
    if (::lstat(from.c_str(), &status) != 0)
        Fail("Failed to rename file '%s' to '%s': %m.", from.c_str(), to.c_str());
    const ParentDirectory target(to);
    std::optional<ParentDirectory> source;
    if (ParentOf(from) != ParentOf(to)) source.emplace(from);
    if (S_ISREG(status.st_mode)) {
        if (from == to + ZETTemporarySuffix) TakeOverFromFormerFile(from, to, status);
        SyncFile(from);
    }
    if (std::rename(from.c_str(), to.c_str()) != 0)
        Fail("Failed to rename file '%s' to '%s': %m.", from.c_str(), to.c_str());
    target.Sync();
    if (source) source->Sync();
}

bool IsFileExist(const std::string& path) {
    RequirePath(path, "IsFileExist");
    struct stat status;
    if (::lstat(path.c_str(), &status) == 0) return true;
    if (errno != ENOENT && errno != ENOTDIR) Fail("Failed to check file '%s': %m.", path.c_str());
    return false;
}

void CopyFile(const std::string& from, const std::string& to) {
    RequirePath(from, "CopyFile");
    RequirePath(to, "CopyFile");
    const ParentDirectory directory(to);
    const std::string copy = to + ZETTemporarySuffix;
    MakeDurableCopy(from, to, copy);
    if (std::rename(copy.c_str(), to.c_str()) != 0) {
        const int error = errno;
        ::unlink(copy.c_str());
        errno = error;
        Fail("Failed to copy file '%s' to '%s': %m.", from.c_str(), to.c_str());
    }
    directory.Sync();
}

}  // namespace ZET
