#include "deploy/targets/TargetStates.h"

#include <algorithm>
#include <set>
#include <utility>

#include "deploy/host/FileBytes.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Staging.h"
#include "deploy/host/Words.h"
#include "deploy/lists/Targets.h"
#include "deploy/state/KnownFiles.h"
#include "deploy/targets/ListedEditDiffs.h"
#include "deploy/targets/ListedEditStates.h"
#include "deploy/targets/StateTeller.h"
#include "deploy/targets/TakeBack.h"
#include "deploy/targets/TemplateStates.h"
#include "deploy/targets/UnmarkedEdits.h"
#include "deploy/targets/WrittenFiles.h"
#include "text/RegionScan.h"

namespace ZET::Deploy {

namespace {

constexpr char kInPlace[] = "in place";

bool HasBlocks(const std::string& path) {
    Text::RegionScan scan(nullptr);
    ReadChunks(path, [&](std::string_view lines) { scan.Take(lines); });
    return scan.HasRegions();
}

std::string StateOfEdit(Host& host, const KnownFiles& known, const std::string& path) {
    if (known.IsAsLeft(path)) return kInPlace;
    const FileState now = StateOf(path);
    if (!now.exists) return "missing";
    if (!now.IsRegular()) return "gone";
    return HasBlocks(path) || HoldsUnmarkedEdits(host, *known.Find(path)) ? "changed" : "gone";
}

/// A template that cannot be looked at is reported with its target.
std::vector<std::string> NewerTemplates(Host& host, const std::vector<Target>& targets) {
    if (targets.empty()) return {};
    std::vector<std::string> names;
    for (const Target& target : targets)
        names.push_back(target.templateName);
    std::vector<std::string> newer;
    for (const TemplateState& state : TemplateStates(host, names))
        if (state.hasNewer) newer.push_back(state.name);
    return newer;
}

/// Returns what is wrong with them.
std::vector<Problem> AddListedEdits(Deployment& product, const KnownFiles& known, TargetStates& states) {
    if (product.Lists().Targets().edits.empty() && known.EditedPaths().empty()) return {};
    const Staging staging;
    const ListedLines lines = FindListedLines(product, known, staging);
    states.listedEdits = StatesOfEdits(product, lines);
    const bool isPlanned = product.Wanted().wantsDiffs;
    return isPlanned ? AddDiffsOfFiles(product, known, staging, states.listedEdits) : lines.problems;
}

LeftOver::Fate FateOf(Deployment& product, const KnownFiles& known, const std::string& path) {
    const TakeBack takeBack(product, known, {});
    const std::optional<WrittenFile> file = WrittenByRecord(product, path);
    if (file && takeBack.IsOutOfReach(*file)) return LeftOver::Fate::StaysOutOfReach;
    if (file && takeBack.IsReserveLost(*file)) return LeftOver::Fate::StaysWithoutReserve;
    return StateOf(path).exists && !takeBack.IsAsLeftToGo(path) ? LeftOver::Fate::StaysEdited
                                                                : LeftOver::Fate::GoesBack;
}

/// Adds the files that were edited in place. One with listed lines is there only if somebody changed it, and
/// the states of its lines do not tell so.
void AddEdits(Host& host, const KnownFiles& known, TargetStates& states) {
    std::set<std::string> told;
    for (const TargetState& target : states.targets)
        told.insert(target.path);
    std::set<std::string> listed;
    for (const ListedEditState& edit : states.listedEdits)
        (edit.state == kInSync || edit.state == kPending ? listed : told).insert(edit.path);
    for (const std::string& path : known.EditedPaths()) {
        if (told.contains(path)) continue;
        const std::string state = StateOfEdit(host, known, path);
        if (!listed.contains(path) || state == "changed") states.edits.push_back({path, state});
    }
}

/// The states of the targets and of all edits at one time, with what is wrong with listed edits.
TargetStates LookAtAll(Deployment& product, const std::vector<Target>& targets,
                       std::vector<Problem>& problems) {
    TargetStates result;
    const KnownFiles known(product, KnownFiles::Unusable::IsTold);
    result.isHistoryRead = !known.IsUnusable();
    result.targets = TellStates(product, known, targets);
    problems = AddListedEdits(product, known, result);
    std::set<std::string> listed;
    for (const TargetState& target : result.targets)
        listed.insert(target.path);
    for (const ListedEditState& edit : result.listedEdits)
        listed.insert(edit.path);
    for (const std::string& path : known.PathsOf(product.Role())) {
        if (listed.count(path) == 0)
            result.leftOvers.push_back(
                {path, FateOf(product, known, path), known.Find(path)->state.knowledge.templateName});
    }
    AddEdits(product, known, result);
    return result;
}

/// Whether every file is as it was left.
bool IsAllWell(const TargetStates& states) {
    return states.IsInSync() && states.leftOvers.empty() &&
           std::all_of(states.edits.begin(), states.edits.end(),
                       [](const EditState& edit) { return edit.state == kInPlace; });
}

/// 0 if there is no history that can be read.
std::int64_t StoreVersionOf(History& history) {
    std::int64_t version = 0;
    history.TryLook([&](Store& store) { version = store.Version(); });
    return version;
}

/// Whether the problem is why the state of a line is unknown.
bool IsTold(const Problem& problem, const std::vector<ListedEditState>& edits) {
    return std::any_of(edits.begin(), edits.end(), [&](const ListedEditState& edit) {
        return edit.state == kUnknown && edit.trouble == problem.Describe();
    });
}

}  // namespace

TargetStates StatesOfTargets(Deployment& product) {
    constexpr int kLooks = 3;
    std::int64_t version = StoreVersionOf(product.HostHistory());
    const TargetList& list = product.Lists().TargetsAnew();
    for (const Problem& problem : list.problems)
        if (problem.isOfUser) product.Out().Warning(problem.Describe());
    RequireWhole(list);
    WarnOfStrays(product.Out(), list);
    const std::vector<Target> targets = SelectTargets(product.Role(), list, {});
    product.HostHistory().TellDenied(
        _("may not be read, so that files edited in place, and what is left over, are not told"));
    std::vector<Problem> problems;
    TargetStates states = LookAtAll(product, targets, problems);
    // What another command wrote meanwhile is not known to this look, and would be told as somebody's edit.
    for (int looks = 1; looks < kLooks && !IsAllWell(states); ++looks) {
        const std::int64_t now = StoreVersionOf(product.HostHistory());
        if (std::exchange(version, now) == now) break;
        states = LookAtAll(product, targets, problems);
    }
    for (const Problem& problem : problems)
        if (!IsTold(problem, states.listedEdits)) product.Out().Warning(problem.Describe());
    states.newerTemplates = NewerTemplates(product, targets);
    return states;
}

bool TargetStates::IsAnyUnknown() const {
    return std::any_of(targets.begin(), targets.end(),
                       [](const TargetState& target) { return target.state == kUnknown; }) ||
           std::any_of(listedEdits.begin(), listedEdits.end(),
                       [](const ListedEditState& edit) { return edit.state == kUnknown; });
}

bool TargetStates::IsInSync() const {
    return std::all_of(targets.begin(), targets.end(),
                       [](const TargetState& target) { return target.state == kInSync; }) &&
           std::all_of(listedEdits.begin(), listedEdits.end(),
                       [](const ListedEditState& edit) { return edit.state == kInSync; }) &&
           std::all_of(leftOvers.begin(), leftOvers.end(),
                       [](const LeftOver& leftOver) { return leftOver.fate != LeftOver::Fate::GoesBack; });
}

}  // namespace ZET::Deploy
