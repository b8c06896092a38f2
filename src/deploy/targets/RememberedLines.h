#ifndef ZET_REMEMBERED_LINES_H
#define ZET_REMEMBERED_LINES_H

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "deploy/state/store/Store.h"

namespace ZET::Deploy {

/// A line that a commit of a role has set, as the history keeps it.
struct RememberedLine {
    Role role = Role::Client;
    std::string selector;
    std::string line;

    /// The parameter or pattern alone.
    std::string Chosen() const { return selector.substr(selector.find(' ') + 1); }

    /// What the lines match that it stands for.
    std::string Pattern() const;

    bool operator==(const RememberedLine&) const = default;
};

/// The lines as a text that is kept with the file.
std::string TextOf(const std::vector<RememberedLine>& lines);
std::vector<RememberedLine> RememberedIn(std::string_view text);

/// The lines of both roles that are remembered for a file of this kind, with this knowledge.
std::vector<RememberedLine> LinesSetIn(Store& store, FileKind kind, const Knowledge& knowledge);

/// The roles of the lines, and `roles`.
std::set<Role> WithRolesOf(const std::vector<RememberedLine>& lines, std::set<Role> roles);

/// The roles that have committed a file, or lines of it. All roles if nobody can tell any more.
std::set<Role> CommittersOf(Store& store, FileKind kind, const Knowledge& knowledge);

}  // namespace ZET::Deploy

#endif
