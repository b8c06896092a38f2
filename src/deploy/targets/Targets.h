#ifndef ZET_TARGETS_H
#define ZET_TARGETS_H

#include <chrono>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "deploy/state/Host.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// One entry of the list of targets: a template and the file that is made from it.
struct Target {
    std::string templateName;
    std::string path;  ///< as the list has it: an absolute path of the host; empty: the list is broken there
    std::set<Role> roles;            ///< for which
    std::vector<std::string> check;  ///< an argument list, "{}" for the staged file; empty: no check
    std::chrono::seconds checkTimeout{60};
    std::map<Role, std::vector<std::string>> restarts;  ///< the services to name after a change
    bool isSecret = false;                              ///< its text is never shown
    std::string trusted;  ///< a user whose directories count as root's; empty: none
    int line = 0;         ///< of its name in the list

    bool IsFor(Role role) const { return roles.contains(role); }
    std::vector<std::string> RestartsFor(Role role) const {
        const auto found = restarts.find(role);
        return found == restarts.end() ? std::vector<std::string>() : found->second;
    }
};

/// The list of targets as it stands, with what is wrong in it.
struct TargetList {
    std::string file;
    std::vector<Target> targets;
    std::vector<Problem> problems;
    bool isUnderstood = true;  ///< false: nothing is known of it but the one problem
};

/// The list of targets, in the directory of the pristine templates.
std::string TargetListFile(Host& host);

/// Reads the list of targets in its place. A list that cannot be read is a `Failure`,
/// and so is, while root runs, one that others may write or lead root to; broken entries are problems.
TargetList ReadTargetList(Host& host);

/// The targets of the role whose templates `templateNames` has, all when it is empty, in the order of the
/// list. A template that the list does not have for the role is a `UsageError`.
std::vector<Target> SelectTargets(Role role, const TargetList& list,
                                  const std::vector<std::string>& templateNames);

/// The same of the host's role and the list in its place; a broken one is a `Failure` with all its problems.
std::vector<Target> SelectTargets(Host& host, const std::vector<std::string>& templateNames);

}  // namespace ZET::Deploy

#endif
