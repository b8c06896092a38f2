#include "Attributes.h"

#include <endian.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Message.h"
#include "Sync.h"
#include "zet/ZETHost.h"
#include "zet/ZETLogProvider.h"

namespace ZET::Core {

namespace {

constexpr char kAcl[] = "system.posix_acl_access";
constexpr char kLabel[] = "security.selinux";
constexpr std::string_view kUserPrefix = "user.";
constexpr mode_t kPermissions = 07777;
constexpr mode_t kSetIds = S_ISUID | S_ISGID;
constexpr mode_t kPrivate = S_IRUSR | S_IWUSR;

thread_local bool t_areOwnersLeftToHost = false;

struct Attribute {
    std::string name;
    std::string value;
};

/// The changes that make one file match another.
struct Changes {
    std::vector<Attribute> set;
    std::vector<std::string> remove;
    bool owner;
    bool IsEmpty() const { return set.empty() && remove.empty() && !owner; }
};

/// Whether `errno` means that an ordinary user may not do this, or that the file system does not support it.
bool IsTolerable() {
    return errno == EPERM || errno == EACCES || errno == ENOTSUP || errno == ENOSYS;
}

/// Reports the failure in `errno`, which `message` describes: as a warning if `tolerable`, else as an
/// exception.
void Report(const std::string& path, const std::string& message, bool tolerable) {
    if (!tolerable) throw EZETHostError(message, "", {.path = path, .errorNumber = errno});
    CZETLogProvider::GetLogProvider().Put(ZETLogWarning, 1, message.c_str());
}

void ReportAttribute(const std::string& name, const std::string& path) {
    Report(path, Message("Failed to keep attribute '%s' of file '%s': %m.", name.c_str(), path.c_str()),
           IsTolerable());
}

bool IsKept(std::string_view name) {
    return name == kAcl || name == kLabel || name.substr(0, kUserPrefix.size()) == kUserPrefix;
}

/// A path to a file opened with `O_PATH`, which calls by descriptor refuse.
std::string WayTo(const AttributedFile& file) {
    return "/proc/self/fd/" + std::to_string(file.descriptor.Number());
}

/// `List` and `Get` wrap the system calls by path or by descriptor, whichever the file needs.
ssize_t List(const AttributedFile& file, char* names, std::size_t size) {
    if (file.isPathOnly) return ::listxattr(WayTo(file).c_str(), names, size);
    return ::flistxattr(file.descriptor.Number(), names, size);
}

ssize_t Get(const AttributedFile& file, const std::string& name, char* value, std::size_t size) {
    if (file.isPathOnly) return ::getxattr(WayTo(file).c_str(), name.c_str(), value, size);
    return ::fgetxattr(file.descriptor.Number(), name.c_str(), value, size);
}

/// The attribute names as the system returns them, each followed by a NUL; empty if they are not available.
std::string ListNames(const AttributedFile& file) {
    std::string names(1024, '\0');
    while (true) {
        const ssize_t length = List(file, names.data(), names.size());
        if (length >= 0) return names.substr(0, static_cast<std::size_t>(length));
        if (errno != ERANGE) break;
        names.resize(names.size() * 4);
    }
    // Without /proc, an unreadable file's attributes cannot be listed.
    const bool isUnknown = errno == ENOTSUP || errno == ENOSYS || (file.isPathOnly && errno == ENOENT);
    if (!isUnknown)
        FailSystem(file.path, "Failed to read the attributes of file '%s': %m.", file.path.c_str());
    return {};
}

std::vector<std::string> KeptNames(const AttributedFile& file) {
    const std::string names = ListNames(file);
    std::vector<std::string> result;
    for (std::size_t start = 0; start < names.size();) {
        const std::string name = names.c_str() + start;
        if (IsKept(name)) result.push_back(name);
        start += name.size() + 1;
    }
    return result;
}

/// None if the attribute is gone, or, with a warning, if it may not be read.
std::optional<std::string> ReadAttribute(const AttributedFile& file, const std::string& name) {
    std::string value(1024, '\0');
    while (true) {
        const ssize_t length = Get(file, name, value.data(), value.size());
        if (length >= 0) return value.substr(0, static_cast<std::size_t>(length));
        if (errno != ERANGE) break;
        value.resize(value.size() * 4);
    }
    if (errno != ENODATA) ReportAttribute(name, file.path);
    return std::nullopt;
}

/// Makes an ACL, in the form that the system stores, agree with `mode`: otherwise setting it would briefly
/// open the file to users whom the mode excludes.
void FitAclToMode(std::string& acl, mode_t mode) {
    constexpr std::size_t kHeader = 4;
    struct Entry {
        std::uint16_t tag;
        std::uint16_t permissions;
        std::uint32_t id;
    };
    constexpr std::uint16_t kOwner = 0x01, kGroup = 0x04, kMask = 0x10, kOther = 0x20;
    std::size_t group = std::string::npos;
    for (std::size_t at = kHeader; at + sizeof(Entry) <= acl.size(); at += sizeof(Entry)) {
        Entry entry;
        std::memcpy(&entry, acl.data() + at, sizeof entry);
        const std::uint16_t tag = le16toh(entry.tag);
        // A mask, which follows the group entry, stands for the group bits of the mode.
        if (tag == kGroup || tag == kMask) group = at;
        if (tag != kOwner && tag != kOther) continue;
        entry.permissions = htole16(static_cast<std::uint16_t>((tag == kOwner ? mode >> 6 : mode) & 07));
        std::memcpy(acl.data() + at, &entry, sizeof entry);
    }
    if (group == std::string::npos) return;
    const std::uint16_t permissions = htole16(static_cast<std::uint16_t>((mode >> 3) & 07));
    std::memcpy(acl.data() + group + offsetof(Entry, permissions), &permissions, sizeof permissions);
}

bool Contains(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

Changes Compare(const AttributedFile& donor, const AttributedFile& receiver, mode_t mode) {
    Changes changes;
    changes.owner =
        donor.status.st_uid != receiver.status.st_uid || donor.status.st_gid != receiver.status.st_gid;
    const std::vector<std::string> wanted = KeptNames(donor);
    const std::vector<std::string> present = KeptNames(receiver);
    for (const std::string& name : wanted) {
        std::optional<std::string> value = ReadAttribute(donor, name);
        if (!value) continue;
        if (name == kAcl) FitAclToMode(*value, mode);
        if (Contains(present, name) && ReadAttribute(receiver, name) == value) continue;
        changes.set.push_back({name, *value});
    }
    for (const std::string& name : present)
        if (name != kLabel && !Contains(wanted, name)) changes.remove.push_back(name);
    return changes;
}

/// Sets owner and group. False if either could not be set; warns unless the host sets them itself.
bool ChangeOwner(const AttributedFile& file, const struct stat& donor) {
    constexpr uid_t kAsItIs = static_cast<uid_t>(-1);
    const int number = file.descriptor.Number();
    const auto report = [&](const std::string& message) {
        // EINVAL: the owner is unknown to this user namespace.
        const bool isTolerable = IsTolerable() || errno == EINVAL;
        if (!isTolerable || !t_areOwnersLeftToHost) Report(file.path, message, isTolerable);
    };
    if (::fchown(number, donor.st_uid, donor.st_gid) == 0) return true;
    report(Message("Failed to keep the owner of file '%s': %m.", file.path.c_str()));
    if (::fchown(number, kAsItIs, donor.st_gid) == 0) return false;
    report(Message("Failed to keep the group of file '%s': %m.", file.path.c_str()));
    return false;
}

void ApplyAttributes(const AttributedFile& file, const Changes& changes) {
    const int number = file.descriptor.Number();
    for (const auto& [name, value] : changes.set)
        if (::fsetxattr(number, name.c_str(), value.data(), value.size(), 0) != 0)
            ReportAttribute(name, file.path);
    for (const std::string& name : changes.remove)
        if (::fremovexattr(number, name.c_str()) != 0 && errno != ENODATA) ReportAttribute(name, file.path);
}

void SetMode(const AttributedFile& file, mode_t mode) {
    if (::fchmod(file.descriptor.Number(), mode) != 0)
        FailSystem(file.path, "Failed to set the mode of file '%s': %m.", file.path.c_str());
}

/// Makes the file private for the time being, and writable, which setting user attributes requires. False,
/// with a warning, if that is not possible.
bool MakePrivate(const AttributedFile& file) {
    if ((file.status.st_mode & kPermissions) == kPrivate) return true;
    if (file.isPathOnly)
        errno = EACCES;
    else if (::fchmod(file.descriptor.Number(), kPrivate) == 0)
        return true;
    Report(file.path, Message("Failed to keep the attributes of file '%s': %m.", file.path.c_str()),
           IsTolerable());
    return false;
}

/// Applies the changes; returns the mode that the file may have afterwards.
mode_t Apply(const AttributedFile& donor, const AttributedFile& receiver, const Changes& changes,
             mode_t mode) {
    try {
        ApplyAttributes(receiver, changes);
        if (changes.owner && !ChangeOwner(receiver, donor.status)) return mode & ~kSetIds;
        return mode;
    } catch (...) {
        ::fchmod(receiver.descriptor.Number(), receiver.status.st_mode & kPermissions);
        throw;
    }
}

}  // namespace

bool OpenToRead(AttributedFile& file) {
    constexpr int kFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    file.descriptor.Reset(::open(file.path.c_str(), kFlags | O_NOFOLLOW));
    file.isLinked = !file.descriptor.IsOpen() && errno == ELOOP;
    if (file.isLinked) file.descriptor.Reset(::open(file.path.c_str(), kFlags));
    return file.descriptor.IsOpen();
}

std::optional<AttributedFile> OpenDonor(const std::string& path) {
    AttributedFile file(path);
    if (!OpenToRead(file) && errno == EACCES) {
        file.isPathOnly = true;
        file.descriptor.Reset(::open(path.c_str(), O_PATH | O_CLOEXEC | (file.isLinked ? 0 : O_NOFOLLOW)));
    }
    if (!file.descriptor.IsOpen()) {
        // Opening a socket gives ENXIO.
        if (errno == ENOENT || errno == ENOTDIR || errno == ELOOP || errno == ENXIO) return std::nullopt;
        FailSystem(path, "Failed to open file '%s': %m.", path.c_str());
    }
    if (::fstat(file.descriptor.Number(), &file.status) != 0)
        FailSystem(path, "Failed to check file '%s': %m.", path.c_str());
    if (!S_ISREG(file.status.st_mode)) return std::nullopt;
    return file;
}

void SyncAttributedFile(const AttributedFile& file) {
    if (file.isPathOnly)
        SyncFile(Descriptor(), file.path);
    else
        SyncFile(file.descriptor, file.path);
}

mode_t ModeAllowedBy(const AttributedFile& donor, mode_t mode) {
    if ((mode & kSetIds) == 0 || (!donor.isLinked && donor.status.st_nlink == 1)) return mode;
    Warn("Set-user-ID and set-group-ID are left out: '%s' is a link, or a file with another name.",
         donor.path.c_str());
    return mode & ~kSetIds;
}

void TakeOverAttributes(const AttributedFile& donor, const AttributedFile& receiver, mode_t mode) {
    mode &= kPermissions;
    const Changes changes = Compare(donor, receiver, mode);
    if (changes.IsEmpty() && mode == (receiver.status.st_mode & kPermissions)) return;
    if (MakePrivate(receiver)) SetMode(receiver, Apply(donor, receiver, changes, mode));
}

}  // namespace ZET::Core

namespace ZET {

bool LeaveOwnersToHost(bool areLeft) {
    return std::exchange(Core::t_areOwnersLeftToHost, areLeft);
}

}  // namespace ZET
