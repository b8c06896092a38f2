#include "deploy/lists/Targets.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <set>

#include "deploy/host/Failure.h"
#include "deploy/host/FileState.h"
#include "deploy/host/ListedDirectory.h"
#include "deploy/host/Words.h"
#include "deploy/lists/ConditionValues.h"
#include "deploy/lists/ListFile.h"
#include "deploy/lists/TargetListReader.h"
#include "deploy/state/Instructions.h"
#include "posix/PathNames.h"

namespace ZET::Deploy {

std::string TargetListFile(Host& host) {
    return host.Param("ZET_CFG_TEMPL_DIR") + "/" + kTargetList;
}

namespace {

/// Throws a `Failure` if nobody can rely on the list.
ListText ReadList(const Paths& paths, const std::string& file, bool isShipped) {
    if (!paths.StaysInside(file)) {
        throw Failure({.file = file,
                       .text = _("the list of targets is a link that leads out of the root directory"),
                       .remedy = _("put the list itself there")});
    }
    if (const std::optional<Problem> problem = CheckWayTo(paths, file)) throw Failure(*problem);
    return {file, ReadListFile(file, isShipped)};
}

/// Returns a problem if this user may not see the host's own lists, and so cannot know what they keep secret.
std::optional<Problem> AddOwnLists(const Paths& paths, const std::string& directory,
                                   std::vector<ListText>& texts) {
    try {
        for (const std::string& name : NamesIn(paths, directory, ".toml"))
            texts.push_back(ReadList(paths, directory + "/" + name, false));
        // Whoever may write the directory can take lists away, or add to an empty one.
        if (StateOf(directory).exists) RequireOwnInstruction(paths, directory);
        return std::nullopt;
    } catch (const Failure& failure) {
        if (failure.ErrorNumber() != EACCES) throw;
        Problem problem = failure.Facts();
        problem.isOfUser = true;
        return problem;
    }
}

[[noreturn]] void FailToSelect(Role role, const TargetList& list, const std::string& name) {
    for (const Target& target : list.targets) {
        if (target.templateName != name || !target.IsFor(role)) continue;
        throw UsageError(Words("%s: the template \"%s\" is not in force: %s (name one that is)", target.file,
                               name, target.WhyNot()));
    }
    throw UsageError(Words("%s: has no template \"%s\" for the role %s (name one that it has, or add it)",
                           list.file, name, RoleInWords(role)));
}

}  // namespace

std::string ListEntry::WhyNot() const {
    if (!isEnabled) return _("it is disabled");
    if (isStray) return _("no list before has it");
    return isConditionMet ? "" : Words("%s is not so", when.Text());
}

bool LeavesTemplates(std::string_view templateName) {
    return templateName.starts_with('/') || templateName.ends_with('/') || HasStepUp(templateName) ||
           Normalised(templateName) == "/";
}

bool IsAmongLists(std::string_view templateName) {
    constexpr std::string_view kDirectories[] = {"targets.d/", "defaults.d/", "values.d/"};
    return templateName == "values.conf" ||
           std::any_of(std::begin(kDirectories), std::end(kDirectories),
                       [&](std::string_view directory) { return templateName.starts_with(directory); });
}

TargetList ReadTargetList(Host& host) {
    const Paths& paths = host.HostPaths();
    const std::string directory = host.Param("ZET_CFG_DIR") + "/targets.d";
    std::vector<ListText> texts = {ReadList(paths, TargetListFile(host), true)};
    std::optional<Problem> denied = AddOwnLists(paths, directory, texts);
    std::optional<ConditionValues> values;
    TargetList list = ReadTargetTexts(texts, [&](const std::string& name) {
        if (!values) values.emplace(host);
        return values->Find(name).value_or(ConditionValue{}).text;
    });
    if (denied) list.problems.push_back(std::move(*denied));
    return list;
}

std::vector<Target> SelectTargets(Role role, const TargetList& list,
                                  const std::vector<std::string>& templateNames) {
    const std::set<std::string> wanted(templateNames.begin(), templateNames.end());
    std::set<std::string> found;
    std::vector<Target> selected;
    for (const Target& target : list.targets) {
        const bool isNamed = wanted.empty() || wanted.contains(target.templateName);
        if (!isNamed || !target.IsInForceFor(role)) continue;
        selected.push_back(target);
        found.insert(target.templateName);
    }
    for (const std::string& name : templateNames)
        if (!found.contains(name)) FailToSelect(role, list, name);
    return selected;
}

void WarnOfStrays(Observer& observer, const TargetList& list) {
    const auto warn = [&](const ListEntry& entry, const char* text, const std::string& name,
                          const char* remedy) {
        if (!entry.isStray) return;
        const Problem stray = {
            .file = entry.file, .line = entry.line, .text = Words(text, name), .remedy = _(remedy)};
        observer.Warning(stray.Describe());
    };
    for (const Target& target : list.targets)
        warn(target, ZET_TEXT("no list before this one has the template [%s], and it has no target"),
             target.templateName, ZET_TEXT("take its keys out, or add target = \"/PATH\""));
    for (const ListedEdit& edit : list.edits)
        warn(edit, ZET_TEXT("no list before this one has the edit \"%s\", and it has no file"), edit.name,
             ZET_TEXT("take its keys out, or add file = \"/PATH\""));
}

void RequireWhole(const TargetList& list) {
    std::vector<Problem> problems;
    std::copy_if(list.problems.begin(), list.problems.end(), std::back_inserter(problems),
                 [](const Problem& problem) { return !problem.isOfUser; });
    if (problems.empty()) return;
    Problem first = problems.front();
    first.output = LinesOf(problems);
    throw Failure(_("the list of targets is broken:"), first);
}

std::vector<Target> SelectTargets(Host& host, const std::vector<std::string>& templateNames) {
    const TargetList list = ReadTargetList(host);
    RequireWhole(list);
    return SelectTargets(host.Role(), list, templateNames);
}

}  // namespace ZET::Deploy
