#include "deploy/targets/TargetStates.h"

#include <algorithm>
#include <set>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileState.h"
#include "deploy/host/FileVersion.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/StagedOwner.h"
#include "deploy/host/Staging.h"
#include "deploy/host/Words.h"
#include "deploy/lists/Targets.h"
#include "deploy/state/KnownFiles.h"
#include "deploy/targets/EditMerge.h"
#include "deploy/targets/FileOrigin.h"
#include "deploy/targets/ListedEditDiffs.h"
#include "deploy/targets/ListedEditStates.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/ShownDiff.h"
#include "deploy/targets/TakeBack.h"
#include "deploy/targets/TemplateFileCheck.h"
#include "deploy/targets/TemplateFiles.h"
#include "deploy/targets/TemplateStates.h"
#include "deploy/targets/UnmarkedEdits.h"
#include "deploy/targets/WrittenFiles.h"
#include "text/RegionScan.h"

namespace ZET::Deploy {

namespace {

constexpr char kInPlace[] = "in place";

/// Throws a `Failure` if this user cannot read the template: what a commit would make of it is unknown then.
void RequireReadableTemplate(Host& host, const std::string& templateName) {
    const std::string file = RemedyErrors("", [&] { return TemplateFile(host, templateName); });
    if (!file.empty() && host.HostPaths().StaysInside(file)) RequireReadableFile(file);
}

/// Throws a `Failure` if some values cannot be read: what a commit would make of any template is unknown
/// then.
void RequireReadValues(Host& host) {
    const HostValues::Unread& unread = host.Values().UnreadSources();
    for (const auto* sources : {&unread.params, &unread.texts})
        if (!sources->empty()) throw Failure(sources->front());
}

/// Renders the targets as a commit would, and compares.
class StateTeller {
  public:
    StateTeller(Deployment& product, const KnownFiles& known)
        : m_product(product),
          m_known(known),
          m_isUntold(known.IsUnusable() && IsFileExist(product.State().Status(product.Role()))) {}

    TargetState Tell(const Target& target) {
        TargetState result;
        result.templateName = target.templateName;
        result.path = m_product.HostPaths().FromInside(target.path);
        result.state = kUnknown;
        result.file = target.path;
        TellTrouble(result, [&] {
            result.path = m_product.HostPaths().WithRealDirectory(m_product.FilePath(target.path));
            m_staged.reset();
            m_reason.clear();
            result.state = StateOfFile(target.templateName, result.path);
            result.reason = m_reason;
            result.isMerged = HoldsMerge(result.path);
            if (result.state == kPending || result.state == kEdited) Compare(target, result);
        });
        m_told++;
        return result;
    }

    /// Adds the diffs to the targets, which must be in the order of the calls of `Tell`.
    void AddDiffs(std::vector<TargetState>& targets) const {
        const DiffSet diffs(m_compared);
        for (std::size_t pair = 0; pair < m_compared.size(); ++pair) {
            TargetState& target = targets[m_places[pair]];
            TellTrouble(target, [&] { target.diff = DiffToShow(m_product, diffs, pair, target.path); });
        }
    }

  private:
    template <typename Call>
    static void TellTrouble(TargetState& result, Call call) {
        try {
            call();
        } catch (const Failure& failure) {
            result.trouble = failure.what();
        } catch (const EZETError& error) {
            result.trouble = FailureOf(error).what();
        }
    }

    /// If the template cannot be rendered, the target is not as committed: a commit would have to report
    /// that.
    std::string StateOfFile(const std::string& templateName, const std::string& path) {
        if (!m_isUntold && !m_known.Has(path, m_product.Role())) return kNotCommitted;
        const SeenFile there(path);
        if (!there.State().exists) return m_known.IsUnusable() ? kDiffers : kMissing;
        const bool canBeRendered =
            CheckTemplateFile(m_product, templateName, m_product.TemplateValues()).empty();
        // The check may object only because this user cannot read the template.
        if (!canBeRendered) RequireReadableTemplate(m_product, templateName);
        if (canBeRendered && IsRendered(templateName, there)) return kInSync;
        RequireReadValues(m_product);
        // The reason is shown in place of a diff.
        if (!canBeRendered && m_product.Wanted().wantsDiffs) m_reason = "template refused";
        if (canBeRendered && IsMadeUnderOtherRoot(templateName, path)) m_reason = "made under another root";
        if (m_known.IsUnusable()) return kDiffers;
        return m_known.IsAsLeft(there) ? kPending : kEdited;
    }

    bool HasStagedMode(const std::string& path) const {
        return StateOf(path).mode == (S_IFREG | m_staged->Mode());
    }

    bool IsAsStaged(const std::string& path) const { return HasStagedMode(path) && m_staged->IsIn(path); }

    /// Whether the file is as it would be, but for the path of its template in the notice.
    bool IsMadeUnderOtherRoot(const std::string& templateName, const std::string& path) const {
        const std::string own = WorkingCopy(m_product, templateName);
        const std::string former = TemplateNamedIn(m_product.Core(), path);
        if (former == own || !former.ends_with(m_product.HostPaths().NameInside(own))) return false;
        std::string text = ReadFileBytes(path);
        const std::size_t place = text.find(former);
        return place != std::string::npos && HasStagedMode(path) &&
               text.replace(place, former.size(), own) == m_staged->Text();
    }

    /// If the template makes the same text by now, it is nobody's edit any more.
    bool HoldsMerge(const std::string& path) const {
        const KnownFile* const known = m_known.Find(path);
        if (known == nullptr || !known->HoldsMerge() || !StateOf(path).exists) return false;
        return m_staged == nullptr || !IsAsStaged(path);
    }

    /// Compares the file with what a commit would write, which nobody knows for a template that it would
    /// refuse.
    void Compare(const Target& target, TargetState& result) {
        if (m_staged == nullptr || !m_product.Wanted().wantsDiffs) return;
        PlannedTarget planned;
        planned.target = target;
        planned.path = result.path;
        planned.staged = m_staged;
        planned.version = VersionOf(result.path);
        planned.before = StateOf(result.path);
        if (!planned.before.IsRegular()) {
            result.reason = "no regular file";
            return;
        }
        planned.after = GiveOwnerInPlace(result.path, *m_staged, planned.before);
        planned.change = FileOutcome::Result::Changed;
        if (result.state == kEdited) planned.foundAs = FoundAs::Edited;
        const EditMerge merge(m_product, m_staging, m_known);
        merge.KeepMerged(planned);
        // If the merge conflicts, the commit would be refused, and what the template makes is shown.
        if (ConfiguredOnEdit(m_product) == OnEdit::Merge && planned.IsOthersWork()) merge.Merge(planned);
        result.before = planned.before;
        result.after = planned.after;
        m_compared.push_back({result.path, planned.staged->File()});
        m_places.push_back(m_told);
    }

    /// Renders for the role whose command the notice names.
    bool IsRendered(const std::string& templateName, const SeenFile& there) {
        const std::string& path = there.Path();
        const KnownFile* const known = m_known.Find(path);
        const Role own = m_product.Role();
        const bool isMerge = known != nullptr && known->HoldsMerge();
        const ComparedRendering rendering =
            RenderUnlessThere(m_product, {m_staging, templateName, RoleToName(known, own), isMerge}, there);
        m_staged = rendering.staged;
        if (m_staged == nullptr) return true;
        if (!rendering.isOther && IsAsStaged(path)) return true;
        if (known != nullptr && IsMergedWith(m_product, *known, m_staged->Text()))
            return m_known.IsAsLeft(path) && HasStagedMode(path);
        if (!m_known.IsUnusable()) return false;
        return HaveSameModeAndBytes(RenderQuietly(m_product, m_staging, templateName, OtherRole(own)), path);
    }

    Deployment& m_product;
    const KnownFiles& m_known;
    const bool m_isUntold;  ///< which targets the role has committed
    const Staging m_staging;
    std::shared_ptr<const StagedText> m_staged;  ///< the last rendering; null: it is what is there
    std::string m_reason;                        ///< the reason for the last state
    std::size_t m_told = 0;                      ///< how often `Tell` was called
    std::vector<FilePair> m_compared;            ///< the files that get a diff
    std::vector<std::size_t> m_places;           ///< the indices of their targets
};

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

/// The states of the targets and of all edits at one time, with what is wrong with listed edits.
TargetStates LookAtAll(Deployment& product, const std::vector<Target>& targets,
                       std::vector<Problem>& problems) {
    TargetStates result;
    const KnownFiles known(product, KnownFiles::Unusable::IsTold);
    result.isHistoryRead = !known.IsUnusable();
    StateTeller teller(product, known);
    std::set<std::string> listed;
    for (const Target& target : targets) {
        product.RequireGoOn();
        product.Out().Progress(result.targets.size(), targets.size());
        result.targets.push_back(teller.Tell(target));
        listed.insert(result.targets.back().path);
    }
    teller.AddDiffs(result.targets);
    problems = AddListedEdits(product, known, result);
    for (const ListedEditState& edit : result.listedEdits)
        listed.insert(edit.path);
    for (const std::string& path : known.PathsOf(product.Role())) {
        if (listed.count(path) == 0)
            result.leftOvers.push_back(
                {path, FateOf(product, known, path), known.Find(path)->state.knowledge.templateName});
    }
    for (const std::string& path : known.EditedPaths())
        if (listed.count(path) == 0) result.edits.push_back({path, StateOfEdit(product, known, path)});
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
