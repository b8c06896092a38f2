#include "deploy/targets/Targets.h"

#include <algorithm>

#include "deploy/host/Failure.h"
#include "deploy/state/Instructions.h"
#include "deploy/targets/TargetListReader.h"

namespace ZET::Deploy {

std::string TargetListFile(Host& host) {
    return host.Param("ZET_CFG_TEMPL_DIR") + "/targets.toml";
}

TargetList ReadTargetList(Host& host) {
    const std::string file = TargetListFile(host);
    if (!host.HostPaths().StaysInside(file)) {
        throw Failure({.file = file,
                       .text = "the list of targets is a link that leads out of the root directory",
                       .remedy = "put the list itself there"});
    }
    if (const std::optional<Problem> problem = CheckWayTo(host.HostPaths(), file)) throw Failure(*problem);
    return ReadTargetFile(file);
}

std::vector<Target> SelectTargets(Role role, const TargetList& list,
                                  const std::vector<std::string>& templateNames) {
    std::vector<Target> selected;
    for (const Target& target : list.targets) {
        const bool isNamed = templateNames.empty() || std::find(templateNames.begin(), templateNames.end(),
                                                                target.templateName) != templateNames.end();
        if (isNamed && target.IsFor(role)) selected.push_back(target);
    }
    for (const std::string& name : templateNames) {
        const bool isThere = std::any_of(selected.begin(), selected.end(),
                                         [&](const Target& target) { return target.templateName == name; });
        if (!isThere) {
            throw UsageError(list.file + ": has no template \"" + name + "\" for the role " + NameOf(role) +
                             " (name one that it has, or add it)");
        }
    }
    return selected;
}

std::vector<Target> SelectTargets(Host& host, const std::vector<std::string>& templateNames) {
    const TargetList list = ReadTargetList(host);
    if (!list.problems.empty()) {
        std::string lines;
        for (const Problem& problem : list.problems)
            lines += problem.Describe() + "\n";
        throw Failure("the list of targets is broken:",
                      {.file = list.file, .text = "the list of targets is broken", .output = lines});
    }
    return SelectTargets(host.Role(), list, templateNames);
}

}  // namespace ZET::Deploy
