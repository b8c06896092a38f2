#include "deploy/targets/RememberedLines.h"

#include <cstddef>
#include <iterator>
#include <optional>

#include "deploy/host/Failure.h"
#include "text/Lines.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

std::string RememberedLine::Pattern() const {
    return selector.starts_with("param ") ? ZETEditOpening + Chosen() + "=" : Chosen();
}

/// No part of a line holds a NUL byte or a line feed.
std::string TextOf(const std::vector<RememberedLine>& lines) {
    std::string text;
    for (const RememberedLine& line : lines) {
        text.append(NameOf(line.role)).push_back('\0');
        text.append(line.selector).push_back('\0');
        text.append(line.line).push_back('\n');
    }
    return text;
}

std::vector<RememberedLine> RememberedIn(std::string_view text) {
    std::vector<RememberedLine> lines;
    for (const Text::TextLine& line : Text::SplitLines(text)) {
        const std::size_t first = line.text.find('\0');
        const std::size_t second = first == std::string_view::npos ? first : line.text.find('\0', first + 1);
        if (second == std::string_view::npos) continue;
        const std::optional<Role> role = RoleNamed(std::string(line.text.substr(0, first)));
        if (!role) continue;
        lines.push_back({*role, std::string(line.text.substr(first + 1, second - first - 1)),
                         std::string(line.text.substr(second + 1))});
    }
    return lines;
}

std::vector<RememberedLine> LinesSetIn(Store& store, FileKind kind, const Knowledge& knowledge) {
    if (kind != FileKind::Edit || !knowledge.base) return {};
    return RememberedIn(store.Text(*knowledge.base));
}

std::set<Role> WithRolesOf(const std::vector<RememberedLine>& lines, std::set<Role> roles) {
    for (const RememberedLine& line : lines)
        roles.insert(line.role);
    return roles;
}

std::set<Role> CommittersOf(Store& store, FileKind kind, const Knowledge& knowledge) {
    try {
        return WithRolesOf(LinesSetIn(store, kind, knowledge), knowledge.roles);
    } catch (const Failure&) {
        return {std::begin(kRoles), std::end(kRoles)};
    }
}

}  // namespace ZET::Deploy
