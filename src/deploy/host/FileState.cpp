#include "deploy/host/FileState.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileVersion.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "posix/ModeBits.h"
#include "posix/PathNames.h"

namespace ZET::Deploy {

namespace {

/// `words` has a gap for what `text` returns.
std::string Change(const char* words, const FileState& before, const FileState& after, bool isSame,
                   std::string (*text)(const FileState&)) {
    if (!before.exists) return Words(words, text(after));
    if (isSame) return "";
    return Words(words, text(before) + " -> " + text(after));
}

/// Returns false if nothing is there.
bool Look(int directory, const std::string& name, const std::string& path, struct stat& status) {
    if (fstatat(directory, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) return true;
    if (errno == ENOENT || errno == ENOTDIR) return false;
    const int error = errno;
    const bool isDenied = error == EACCES;
    throw SystemFailure(
        {.file = path,
         .text = _("cannot tell whether it exists"),
         .remedy = isDenied ? _("run the command as a user who may search its directory") : ""},
        error);
}

}  // namespace

std::string ModeText(const FileState& state) {
    char text[8];
    std::snprintf(text, sizeof text, "%04o", static_cast<unsigned>(state.mode & kModeBits));
    return text;
}

std::string OwnerText(const FileState& state) {
    return std::to_string(state.owner) + ":" + std::to_string(state.group);
}

FileState StateFrom(const std::optional<struct stat>& status) {
    FileState state;
    if (!status) return state;
    state.exists = true;
    state.mode = status->st_mode;
    state.owner = status->st_uid;
    state.group = status->st_gid;
    state.links = status->st_nlink;
    return state;
}

FileState StateOf(const std::string& path) {
    return StateIn(AT_FDCWD, path, path);
}

struct stat StatusOfOpened(int descriptor, const std::string& path) {
    struct stat status = {};
    if (fstat(descriptor, &status) != 0) FailOfCall(path, _("cannot be looked at"));
    return status;
}

FileState StateIn(int directory, const std::string& name, const std::string& path) {
    struct stat status = {};
    return Look(directory, name, path, status) ? StateFrom(status) : FileState();
}

FileLook LookAt(const std::string& path) {
    struct stat status = {};
    if (!Look(AT_FDCWD, path, path, status)) return {};
    return {StateFrom(status), VersionFrom(status)};
}

Problem ProblemOfLinkToNothing(const std::string& path) {
    return {path, 0, 0, _("is a link that leads nowhere"), _("remove it, or make what it names")};
}

Problem ProblemOfIrregular(const std::string& path, const FileState& state) {
    if (S_ISLNK(state.mode) && access(path.c_str(), F_OK) != 0 && errno == ENOENT)
        return ProblemOfLinkToNothing(path);
    return {path, 0, 0, _("is no regular file"), _("move it away")};
}

Problem ProblemOfNoDirectory(const std::string& path) {
    const std::string directory = DirectoryOf(path);
    const bool isOther = access(directory.c_str(), F_OK) == 0;
    return {directory, 0, 0, Words("is no directory that %s can be in", path),
            isOther ? _("correct the path") : _("create it, or correct the path")};
}

std::optional<Problem> CheckReplaceableIn(int directory, const std::string& name, const std::string& path) {
    const auto problem = [&](const char* text, const char* remedy) {
        return std::optional<Problem>({path, 0, 0, text, remedy});
    };
    struct statx status = {};
    if (statx(directory, name.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS, &status) != 0)
        return std::nullopt;
    const auto attributes = status.stx_attributes & status.stx_attributes_mask;
    if ((attributes & STATX_ATTR_MOUNT_ROOT) != 0)
        return problem(_("is a mount point, and cannot be replaced"),
                       _("unmount it, or write what is mounted there"));
    if ((attributes & STATX_ATTR_IMMUTABLE) != 0)
        return problem(_("is immutable, and cannot be replaced"), _("chattr -i it"));
    if ((attributes & STATX_ATTR_APPEND) != 0)
        return problem(_("can only be appended to, and cannot be replaced"), _("chattr -a it"));
    return std::nullopt;
}

void RequireReplaceable(const std::string& path) {
    if (const auto problem = CheckReplaceableIn(AT_FDCWD, path, path)) throw Failure(*problem);
}

bool HaveSameModeAndBytes(const std::string& one, const std::string& other) {
    return StateOf(one).mode == StateOf(other).mode && HaveSameBytes(one, other);
}

std::string DescribeChange(const FileState& before, const FileState& after) {
    if (!after.exists) return "";
    const bool isSameMode = ((before.mode ^ after.mode) & kModeBits) == 0;
    const bool isSameOwner = before.owner == after.owner && before.group == after.group;
    std::string text = Change(ZET_TEXT("mode %s"), before, after, isSameMode, ModeText);
    const std::string owner = Change(ZET_TEXT("owner %s"), before, after, isSameOwner, OwnerText);
    if (!text.empty() && !owner.empty()) text += ", ";
    return text + owner;
}

}  // namespace ZET::Deploy
