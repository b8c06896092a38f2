#include "Attributes.h"

#include <endian.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Descriptor.h"
#include "Message.h"
#include "zet/ZETErrors.h"
#include "zet/ZETLogProvider.h"

namespace ZET {

namespace {

constexpr char kAcl[] = "system.posix_acl_access";
constexpr char kLabel[] = "security.selinux";
constexpr std::string_view kUserPrefix = "user.";
constexpr mode_t kPermissions = 07777;

struct Attribute {
    std::string name;
    std::string value;
};

/// What makes one file like another.
struct Changes {
    std::vector<Attribute> set;
    std::vector<std::string> remove;
};

/// Whether `errno` tells of something that an ordinary user may not do or the file system does not know.
bool IsTolerable() {
    return errno == EPERM || errno == EACCES || errno == ENOTSUP || errno == ENOSYS;
}

/// `message` tells of the failure that `errno` stands for.
void Report(const std::string& message, bool tolerable) {
    if (!tolerable) throw EZETError(message, "");
    CZETLogProvider::GetLogProvider().Put(ZETLogWarning, 1, message.c_str());
}

void ReportAttribute(const std::string& name, const std::string& path) {
    Report(Message("Failed to keep attribute '%s' of file '%s': %m.", name.c_str(), path.c_str()),
           IsTolerable());
}

bool IsKept(std::string_view name) {
    return name == kAcl || name == kLabel || name.substr(0, kUserPrefix.size()) == kUserPrefix;
}

/// The names as the system gives them, each with a NUL after it; empty where there are none to know of.
std::string ListNames(const std::string& path) {
    std::string names(1024, '\0');
    while (true) {
        const ssize_t length = ::listxattr(path.c_str(), names.data(), names.size());
        if (length >= 0) return names.substr(0, static_cast<std::size_t>(length));
        if (errno != ERANGE) break;
        names.resize(names.size() * 4);
    }
    if (errno != ENOTSUP && errno != ENOSYS)
        Fail("Failed to read the attributes of file '%s': %m.", path.c_str());
    return {};
}

std::vector<std::string> KeptNames(const std::string& path) {
    const std::string names = ListNames(path);
    std::vector<std::string> result;
    for (std::size_t start = 0; start < names.size();) {
        const std::string name = names.c_str() + start;
        if (IsKept(name)) result.push_back(name);
        start += name.size() + 1;
    }
    return result;
}

/// Nothing when there is no such attribute any more or, after a warning, when it may not be read.
std::optional<std::string> ReadAttribute(const std::string& path, const std::string& name) {
    std::string value(1024, '\0');
    while (true) {
        const ssize_t length = ::getxattr(path.c_str(), name.c_str(), value.data(), value.size());
        if (length >= 0) return value.substr(0, static_cast<std::size_t>(length));
        if (errno != ERANGE) break;
        value.resize(value.size() * 4);
    }
    if (errno != ENODATA) ReportAttribute(name, path);
    return std::nullopt;
}

/// Lets an ACL, in the form that the system stores, say the same as `mode`: otherwise setting it would open
/// the file for a moment to somebody whom the mode shuts out.
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
        // A mask, which comes after the group, stands for the group's bits of the mode.
        if (tag == kGroup || tag == kMask) group = at;
        if (tag != kOwner && tag != kOther) continue;
        entry.permissions = htole16(static_cast<std::uint16_t>((tag == kOwner ? mode >> 6 : mode) & 07));
        std::memcpy(acl.data() + at, &entry, sizeof entry);
    }
    if (group == std::string::npos) return;
    const std::uint16_t permissions = htole16(static_cast<std::uint16_t>((mode >> 3) & 07));
    std::memcpy(acl.data() + group + offsetof(Entry, permissions), &permissions, sizeof permissions);
}

Changes CompareAttributes(const std::string& donor, const std::string& path, mode_t mode) {
    Changes changes;
    const std::vector<std::string> wanted = KeptNames(donor);
    const std::vector<std::string> present = KeptNames(path);
    const auto contains = [](const std::vector<std::string>& names, const std::string& name) {
        for (const std::string& each : names)
            if (each == name) return true;
        return false;
    };
    for (const std::string& name : wanted) {
        std::optional<std::string> value = ReadAttribute(donor, name);
        if (!value) continue;
        if (name == kAcl) FitAclToMode(*value, mode);
        if (contains(present, name) && ReadAttribute(path, name) == value) continue;
        changes.set.push_back({name, *value});
    }
    for (const std::string& name : present)
        if (name != kLabel && !contains(wanted, name)) changes.remove.push_back(name);
    return changes;
}

void ChangeOwner(const Descriptor& file, const std::string& path, const struct stat& donor) {
    if (::fchown(file.Number(), donor.st_uid, donor.st_gid) == 0) return;
    // EINVAL: an owner whom this user namespace does not know.
    Report(Message("Failed to keep the owner of file '%s': %m.", path.c_str()),
           IsTolerable() || errno == EINVAL);
    constexpr uid_t kAsItIs = static_cast<uid_t>(-1);
    if (::fchown(file.Number(), kAsItIs, donor.st_gid) == 0) return;
    Report(Message("Failed to keep the group of file '%s': %m.", path.c_str()),
           IsTolerable() || errno == EINVAL);
}

bool ChangeMode(const Descriptor& file, const std::string& path, mode_t mode) {
    if (::fchmod(file.Number(), mode & kPermissions) == 0) return true;
    Report(Message("Failed to keep the mode of file '%s': %m.", path.c_str()), IsTolerable());
    return false;
}

void Apply(const Descriptor& file, const std::string& path, const Changes& changes) {
    for (const Attribute& attribute : changes.set) {
        const char* name = attribute.name.c_str();
        if (::fsetxattr(file.Number(), name, attribute.value.data(), attribute.value.size(), 0) != 0)
            ReportAttribute(attribute.name, path);
    }
    for (const std::string& name : changes.remove)
        if (::fremovexattr(file.Number(), name.c_str()) != 0 && errno != ENODATA) ReportAttribute(name, path);
}

}  // namespace

void TakeOverAttributes(const StatedFile& donor, const StatedFile& receiver) {
    const mode_t mode = receiver.status.st_mode;
    const std::string& path = receiver.path;
    const Changes changes = CompareAttributes(donor.path, path, mode);
    const bool isSameOwner =
        donor.status.st_uid == receiver.status.st_uid && donor.status.st_gid == receiver.status.st_gid;
    if (isSameOwner && changes.set.empty() && changes.remove.empty()) return;
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!file.IsOpen()) {
        Report(Message("Failed to open file '%s': %m.", path.c_str()), IsTolerable());
        return;
    }
    // Closed to everybody else meanwhile, and writable, without which user attributes cannot be set.
    if (!ChangeMode(file, path, S_IRUSR | S_IWUSR)) return;
    try {
        Apply(file, path, changes);
    } catch (...) {
        ::fchmod(file.Number(), mode & kPermissions);
        throw;
    }
    ChangeMode(file, path, mode);
    if (isSameOwner) return;
    ChangeOwner(file, path, donor.status);
    // A new owner costs the file its set-user-ID and set-group-ID bits.
    if ((mode & (S_ISUID | S_ISGID)) != 0) ChangeMode(file, path, mode);
}

}  // namespace ZET
