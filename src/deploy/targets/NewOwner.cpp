#include "deploy/targets/NewOwner.h"

#include <grp.h>
#include <pwd.h>

#include "deploy/host/Words.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

std::string UserIn(const Target& target) {
    return target.owner.substr(0, target.owner.find(':'));
}

/// Empty: the user's own group.
std::string GroupIn(const Target& target) {
    const std::size_t colon = target.owner.find(':');
    return colon == std::string::npos ? "" : target.owner.substr(colon + 1);
}

}  // namespace

std::optional<FileOwner> NewOwnerOf(const Target& target, const std::string& path, const FileState& before) {
    if (target.owner.empty() || before.exists || OwnerProblem(target)) return std::nullopt;
    // The file takes its owner over from the reserve.
    if (IsFileExist(path + ZETReserveSuffix)) return std::nullopt;
    const passwd* const user = getpwnam(UserIn(target).c_str());
    FileOwner owner{user->pw_uid, user->pw_gid};
    if (const std::string name = GroupIn(target); !name.empty()) owner.group = getgrnam(name.c_str())->gr_gid;
    return owner;
}

void GiveTo(const std::optional<FileOwner>& owner, FileState& file) {
    if (!owner) return;
    file.owner = owner->user;
    file.group = owner->group;
}

std::optional<Problem> OwnerProblem(const Target& target) {
    if (target.owner.empty()) return std::nullopt;
    const auto problem = [&](const std::string& text, const char* remedy) {
        return Problem{.file = target.file, .line = target.line, .text = text, .remedy = remedy};
    };
    const std::string user = UserIn(target);
    if (getpwnam(user.c_str()) == nullptr)
        return problem(Words("this host has no user \"%s\", to whom the file is to belong", user),
                       _("correct owner, or make the user"));
    const std::string group = GroupIn(target);
    if (!group.empty() && getgrnam(group.c_str()) == nullptr)
        return problem(Words("this host has no group \"%s\", to whom the file is to belong", group),
                       _("correct owner, or make the group"));
    return std::nullopt;
}

}  // namespace ZET::Deploy
