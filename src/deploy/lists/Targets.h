#ifndef ZET_TARGETS_H
#define ZET_TARGETS_H

#include <sys/types.h>

#include <chrono>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "deploy/state/Host.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// What has to hold for an entry to be in force: a parameter has this value.
struct Condition {
    std::string parameter;  ///< empty: there is no condition
    std::string value;
    std::string file{};  ///< the list that has the condition
    int line = 0;

    std::string Text() const { return parameter + "=" + value; }
};

/// An entry of a list, whatever kind it is.
struct ListEntry {
    std::set<Role> roles;   ///< that it is for
    bool hasRoles = false;  ///< the list gives roles, rightly or not
    bool isEnabled = true;
    Condition when;
    bool isConditionMet = true;
    bool isStray = false;                  ///< it changes keys of a template that no list before it has
    std::string file;                      ///< the first list that has it
    int line = 0;                          ///< of its name in that list
    std::vector<std::string> changedBy{};  ///< the later lists that changed it

    bool IsFor(Role role) const { return roles.contains(role); }
    bool IsInForce() const { return isEnabled && isConditionMet && !isStray; }
    bool IsInForceFor(Role role) const { return IsFor(role) && IsInForce(); }

    /// Why it is not in force; empty if it is.
    std::string WhyNot() const;
};

/// The services that a change of a file concerns.
struct Services {
    std::vector<std::string> restart;
    std::vector<std::string> reload;
};

/// A template and the file that is made from it.
struct Target : ListEntry {
    std::string templateName;
    std::string path;  ///< as the list has it: an absolute path of the host; empty: the list is broken there
    std::vector<std::string> check;  ///< an argument list, "{}" for the staged file; empty: no check
    std::chrono::seconds checkTimeout{60};
    std::map<Role, std::vector<std::string>> restarts;  ///< to report for a restart after a change
    std::map<Role, std::vector<std::string>> reloads;   ///< for which it is enough to read the file again
    bool isSecret = false;                              ///< its text is shown only with --show-secrets
    bool hasNotice = true;       ///< false: rendered without any of the system's own lines
    std::string trusted;         ///< a user whose directories count as root's; empty: none
    std::optional<mode_t> mode;  ///< none: the mode of the template
    std::string owner;           ///< of a new file, "user" or "user:group"; empty: whoever creates it

    std::vector<std::string> RestartsFor(Role role) const { return Of(restarts, role); }
    Services ServicesFor(Role role) const { return {RestartsFor(role), Of(reloads, role)}; }

  private:
    static std::vector<std::string> Of(const std::map<Role, std::vector<std::string>>& services, Role role) {
        const auto found = services.find(role);
        return found == services.end() ? std::vector<std::string>() : found->second;
    }
};

/// A line that the lists ask for in a file that is nobody's target.
struct ListedEdit : ListEntry {
    std::string name;  ///< a later list changes the edit by it; empty: none can
    std::string path;  ///< as the list has it
    std::string param;
    std::string value;        ///< of `param`, with placeholders
    std::string pattern;      ///< instead of `param`
    std::string text;         ///< the line to set, with placeholders
    bool isOptional = false;  ///< the file may be missing
};

/// The lists of the host, each changed by the next, with what is wrong in them.
struct TargetList {
    std::string file;  ///< the shipped one
    std::vector<Target> targets;
    std::vector<Problem> problems;
    bool isUnderstood = true;  ///< false: of one of the lists, nothing but its one problem is known
    std::vector<ListedEdit> edits{};
};

inline constexpr char kTargetList[] = "targets.toml";

/// The path of the shipped list, in the directory of the pristine templates.
std::string TargetListFile(Host& host);

/// Whether a template of this name would lie outside of the directory of the templates.
bool LeavesTemplates(std::string_view templateName);

/// Whether a template of this name would lie where lists or values are read from.
bool IsAmongLists(std::string_view templateName);

/// Reads the shipped list and then the host's own, `targets.d/*.toml` in ZET_CFG_DIR, sorted by the bytes of
/// their names. Throws a `Failure` for a list that cannot be read and, while root runs, for one that others
/// may write or lead root to. Broken entries become problems, and so do own lists that this user may not
/// read.
TargetList ReadTargetList(Host& host);

/// The role's targets in force, in the order of the lists: those of the templates in `templateNames`, or all
/// if it is empty. Throws a `UsageError` for a template that has no target in force for the role.
std::vector<Target> SelectTargets(Role role, const TargetList& list,
                                  const std::vector<std::string>& templateNames);

/// Warns of the entries that count for nothing.
void WarnOfStrays(Observer& observer, const TargetList& list);

/// Throws a `Failure` with all problems if the list is broken. What this user may not read does not count.
void RequireWhole(const TargetList& list);

/// Reads the host's lists, requires them to be whole, and selects for the host's role.
std::vector<Target> SelectTargets(Host& host, const std::vector<std::string>& templateNames);

}  // namespace ZET::Deploy

#endif
