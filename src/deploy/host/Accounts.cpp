#include "deploy/host/Accounts.h"

#include <grp.h>
#include <pwd.h>

#include <charconv>
#include <cstddef>
#include <sstream>
#include <system_error>
#include <vector>

#include "deploy/host/FileState.h"
#include "deploy/host/ListedDirectory.h"

namespace ZET::Deploy {

namespace {

/// The text of the tree's own file; none on the host itself, and in a tree that lacks the file.
std::optional<std::string> TextInTree(const Paths& paths, const std::string& name) {
    if (!paths.HasRoot()) return std::nullopt;
    const std::string file = paths.FromInside(name);
    return StateOf(paths.Resolved(name)).exists ? std::optional(ReadInside(paths, file)) : std::nullopt;
}

/// The fields of the line "NAME:PASSWORD:NUMBER:..."; none if there is no such line.
std::vector<std::string> FieldsOf(const std::string& name, const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with(name + ":")) continue;
        std::vector<std::string> fields;
        std::istringstream rest(line);
        for (std::string field; std::getline(rest, field, ':');)
            fields.push_back(field);
        return fields;
    }
    return {};
}

std::optional<id_t> NumberIn(const std::vector<std::string>& fields, std::size_t index) {
    if (index >= fields.size()) return std::nullopt;
    const std::string& field = fields[index];
    id_t number = 0;
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), number);
    const bool isWhole = error == std::errc() && end == field.data() + field.size();
    return isWhole ? std::optional(number) : std::nullopt;
}

}  // namespace

std::optional<User> UserNamed(const Paths& paths, const std::string& name) {
    constexpr std::size_t kNumber = 2;
    constexpr std::size_t kGroup = 3;
    if (const auto text = TextInTree(paths, "/etc/passwd")) {
        const std::vector<std::string> fields = FieldsOf(name, *text);
        const auto number = NumberIn(fields, kNumber);
        const auto group = NumberIn(fields, kGroup);
        return number && group ? std::optional(User{*number, *group}) : std::nullopt;
    }
    const passwd* const user = getpwnam(name.c_str());
    return user == nullptr ? std::nullopt : std::optional(User{user->pw_uid, user->pw_gid});
}

std::optional<gid_t> GroupNamed(const Paths& paths, const std::string& name) {
    constexpr std::size_t kNumber = 2;
    if (const auto text = TextInTree(paths, "/etc/group")) return NumberIn(FieldsOf(name, *text), kNumber);
    const group* const known = getgrnam(name.c_str());
    return known == nullptr ? std::nullopt : std::optional(known->gr_gid);
}

}  // namespace ZET::Deploy
