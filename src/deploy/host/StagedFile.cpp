#include "deploy/host/StagedFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "posix/Descriptor.h"
#include "posix/ModeBits.h"
#include "posix/ReadWrite.h"

namespace ZET::Deploy {

namespace {

constexpr auto kAsItIs = static_cast<uid_t>(-1);  // of an owner or a group

/// An ordinary user may not give files away: the file then shows the owner that the final one will have.
void GiveOwner(int descriptor, const std::string& path, uid_t owner, gid_t group, mode_t mode) {
    for (const auto& [newOwner, newGroup] : {std::pair{owner, kAsItIs}, std::pair{kAsItIs, group}}) {
        if (fchown(descriptor, newOwner, newGroup) != 0 && errno != EPERM && errno != EINVAL)
            FailOfCall(path, _("cannot get its owner"));
    }
    // After the owner, as a change of owner drops the set-user-ID bits.
    if (fchmod(descriptor, mode & kModeBits) != 0) FailOfCall(path, _("cannot get its mode"));
}

bool IsOwn(const struct stat& status) {
    return S_ISREG(status.st_mode) && status.st_nlink == 1 && status.st_uid == geteuid();
}

[[noreturn]] void FailOfOther(const std::string& path) {
    throw Failure({.file = path, .text = _("is in the way, and not from here"), .remedy = _("move it away")});
}

/// Removes a former file whose mode keeps this user from writing it.
bool RemoveReadOnly(const std::string& path) {
    struct stat status = {};
    return errno == EACCES && lstat(path.c_str(), &status) == 0 && IsOwn(status) && unlink(path.c_str()) == 0;
}

/// Opens a new file, or empties a former one of this user's that has no other name.
Descriptor OpenStaged(const std::string& path) {
    constexpr int kFlags = O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    const auto openIt = [&] { return Descriptor(open(path.c_str(), kFlags, S_IRUSR | S_IWUSR)); };
    Descriptor file = openIt();
    if (file < 0 && RemoveReadOnly(path)) file = openIt();
    struct stat status = {};
    if (file < 0 || fstat(file, &status) != 0) FailOfCall(path, _("cannot be written"));
    if (!IsOwn(status)) FailOfOther(path);
    if (ftruncate(file, 0) != 0) FailOfCall(path, _("cannot be written"));
    return file;
}

}  // namespace

void WriteStagedFile(const std::string& path, std::string_view bytes, mode_t mode) {
    const Descriptor descriptor = OpenStaged(path);
    if (!WriteAll(descriptor, bytes)) FailOfCall(path, _("cannot be written"));
    if (fchmod(descriptor, mode & kModeBits) != 0) FailOfCall(path, _("cannot get its mode"));
}

void CopyIntoStaging(const std::string& from, const std::string& to) {
    Descriptor source;
    const std::string bytes = ReadFileBytes(from, source);
    const struct stat status = StatusOfReadable(source, from);
    const Descriptor copy = OpenStaged(to);
    if (!WriteAll(copy, bytes)) FailOfCall(to, _("cannot be written"));
    GiveOwner(copy, to, status.st_uid, status.st_gid, status.st_mode);
}

void GiveStagedFile(const std::string& path, uid_t owner, gid_t group) {
    const Descriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    GiveOwner(file, path, owner, group, StatusOfReadable(file, path).st_mode);
}

}  // namespace ZET::Deploy
