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

/// What has to be so for an entry to be in force: a parameter has this value.
struct Condition {
    std::string parameter;  ///< empty: nothing has to be so
    std::string value;
    std::string file{};  ///< the list that says so
    int line = 0;

    std::string Text() const { return parameter + "=" + value; }
};

/// An entry of a list, of whatever it is about.
struct ListEntry {
    std::set<Role> roles;   ///< for which
    bool hasRoles = false;  ///< they are given, rightly or not
    bool isEnabled = true;
    Condition when;
    bool isConditionMet = true;
    bool isStray = false;                  ///< it changes keys of what no list before has
    std::string file;                      ///< the list that it was first in
    int line = 0;                          ///< of its name there
    std::vector<std::string> changedBy{};  ///< the later lists that changed it

    bool IsFor(Role role) const { return roles.contains(role); }
    bool IsInForce() const { return isEnabled && isConditionMet && !isStray; }

    /// Why it is not in force; empty: it is.
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
    std::map<Role, std::vector<std::string>> restarts;  ///< the services to name after a change
    std::map<Role, std::vector<std::string>> reloads;   ///< those for which it is enough to read it again
    bool isSecret = false;                              ///< its text is never shown
    bool hasNotice = true;       ///< false: rendered without any of the system's own lines
    std::string trusted;         ///< a user whose directories count as root's; empty: none
    std::optional<mode_t> mode;  ///< none: the template's
    std::string owner;           ///< of a file that is new, "user" or "user:group"; empty: whoever makes it

    std::vector<std::string> RestartsFor(Role role) const { return Of(restarts, role); }
    Services ServicesFor(Role role) const { return {RestartsFor(role), Of(reloads, role)}; }

  private:
    static std::vector<std::string> Of(const std::map<Role, std::vector<std::string>>& services, Role role) {
        const auto found = services.find(role);
        return found == services.end() ? std::vector<std::string>() : found->second;
    }
};

/// A line of a file that is nobody's target.
struct ListedEdit : ListEntry {
    std::string name;  ///< by which a later list changes it; empty: none
    std::string path;  ///< as the list has it
    std::string param;
    std::string value;        ///< of the parameter, with placeholders
    std::string pattern;      ///< instead of a parameter
    std::string text;         ///< the line, with placeholders
    bool isOptional = false;  ///< the file need not be there
};

/// The lists of the host, one changed by the next, with what is wrong in them.
struct TargetList {
    std::string file;  ///< the shipped one
    std::vector<Target> targets;
    std::vector<Problem> problems;
    bool isUnderstood = true;  ///< false: nothing is known of one of them but its one problem
    std::vector<ListedEdit> edits{};
};

inline constexpr char kTargetList[] = "targets.toml";

/// The list of targets, in the directory of the pristine templates.
std::string TargetListFile(Host& host);

/// Whether a template of this name would stand among lists or values.
bool IsAmongLists(std::string_view templateName);

/// Reads the shipped list, and the host's own after it: `targets.d/*.toml` in ZET_CFG_DIR, in the order of
/// their bytes. A list that cannot be read is a `Failure`, and so is, while root runs, one that others may
/// write or lead root to; broken entries are problems.
TargetList ReadTargetList(Host& host);

/// The targets in force of the role whose templates `templateNames` has, all when it is empty, in the order
/// of the lists. A template that they do not have in force for the role is a `UsageError`.
std::vector<Target> SelectTargets(Role role, const TargetList& list,
                                  const std::vector<std::string>& templateNames);

/// Tells what of the lists counts for nothing.
void WarnOfStrays(Observer& observer, const TargetList& list);

/// A broken list is a `Failure` with all its problems.
void RequireWhole(const TargetList& list);

/// The same of the host's role and the list in its place; a broken one is a `Failure` with all its problems.
std::vector<Target> SelectTargets(Host& host, const std::vector<std::string>& templateNames);

}  // namespace ZET::Deploy

#endif
