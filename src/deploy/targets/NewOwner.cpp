#include "deploy/targets/NewOwner.h"

#include "deploy/host/Accounts.h"
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

std::optional<FileOwner> NewOwnerOf(const Paths& paths, const Target& target, const std::string& path,
                                    const FileState& before) {
    if (target.owner.empty() || before.exists) return std::nullopt;
    // The file takes its owner over from the reserve.
    if (IsFileExist(path + ZETReserveSuffix)) return std::nullopt;
    const std::optional<User> user = UserNamed(paths, UserIn(target));
    if (!user) return std::nullopt;
    const std::string name = GroupIn(target);
    const std::optional<gid_t> group = name.empty() ? user->group : GroupNamed(paths, name);
    return group ? std::optional(FileOwner{user->number, *group}) : std::nullopt;
}

void GiveTo(const std::optional<FileOwner>& owner, FileState& file) {
    if (!owner) return;
    file.owner = owner->user;
    file.group = owner->group;
}

std::optional<Problem> OwnerProblem(const Paths& paths, const Target& target) {
    if (target.owner.empty()) return std::nullopt;
    const auto problem = [&](const std::string& text, const char* remedy) {
        return Problem{.file = target.file, .line = target.line, .text = text, .remedy = remedy};
    };
    const std::string user = UserIn(target);
    if (!UserNamed(paths, user))
        return problem(Words("this host has no user \"%s\", to whom the file is to belong", user),
                       _("correct owner, or make the user"));
    const std::string group = GroupIn(target);
    if (!group.empty() && !GroupNamed(paths, group))
        return problem(Words("this host has no group \"%s\", to whom the file is to belong", group),
                       _("correct owner, or make the group"));
    return std::nullopt;
}

}  // namespace ZET::Deploy
