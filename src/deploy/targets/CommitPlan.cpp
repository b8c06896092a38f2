#include "deploy/targets/CommitPlan.h"

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileVersion.h"
#include "deploy/host/StagedOwner.h"
#include "deploy/host/Words.h"
#include "deploy/state/CutShort.h"
#include "deploy/state/Instructions.h"
#include "deploy/state/LostOriginal.h"
#include "deploy/state/StateDirectory.h"
#include "deploy/targets/ConditionCheck.h"
#include "deploy/targets/EditMerge.h"
#include "deploy/targets/LineProblems.h"
#include "deploy/targets/NewOwner.h"
#include "deploy/targets/OthersWork.h"
#include "deploy/targets/OwnCheck.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/UnknownNames.h"
#include "deploy/targets/WrittenFiles.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

FileOutcome::Result StayAsItIs(PlannedTarget& planned) {
    planned.after = planned.before;
    planned.after.links = 1;
    return planned.change = FileOutcome::Result::Unchanged;
}

bool HasTextOfReserve(const std::string& path) {
    const std::string reserve = path + ZETReserveSuffix;
    return access(reserve.c_str(), R_OK) == 0 && HaveSameBytes(path, reserve);
}

/// The remedies where others' work stops a commit; the last one loses that work.
struct WaysOut {
    const char* other;
    const char* last;
};

constexpr WaysOut kWaysOfFile = {kOtherWay, kLastWay};
constexpr WaysOut kWaysOfLine = {
    ZET_TEXT("--on-edit=overwrite sets it again, and the history keeps the edit"),
    ZET_TEXT("--on-edit=overwrite sets it again all the same")};

/// Others' work is refused if that is wanted, or if the work would be lost.
template <typename Planned>
std::optional<Problem> ObjectionTo(Host& host, const Planned& file, const std::string& othersWork,
                                   OnEdit onEdit, const WaysOut& ways) {
    if (onEdit == OnEdit::Refuse)
        return Problem{.file = file.path, .text = othersWork, .remedy = _(ways.other)};
    if (!file.before.exists || host.HostHistory().KeepsEditOf(file.version)) return std::nullopt;
    return Problem{.file = file.path,
                   .text = Words("%s, and the history cannot keep the edit", othersWork),
                   .remedy = _(ways.last)};
}

void WarnOf(Deployment& product, const std::vector<Problem>& warnings) {
    for (const Problem& warning : warnings)
        product.Out().Warning(warning.Describe());
}

}  // namespace

CommitPlan::CommitPlan(Deployment& product, const std::vector<std::string>& templateNames, OnEdit onEdit)
    : m_product(product) {
    if (!product.Wanted().dryRun) {
        RequireOwnInstructions(product);
        m_lock = std::make_unique<WriteLock>(product.State(), product.Seeker());
        product.Keeps(*m_lock);
        Staging::RemoveLeftOvers(product.State().Path(), m_lock->MayFollowOneCutShort());
        m_cutShort = SettleCutShort(product, *m_lock);
    }
    m_checked = CheckTargets(product, templateNames);
    ConditionFindings conditions;
    if (templateNames.empty()) {
        conditions = CheckConditions(product);
        Append(m_checked.problems, FindMistypedNames(product, m_checked.templates.used));
        Append(m_checked.problems, std::move(conditions.problems));
    }
    if (!m_checked.problems.empty()) {
        if (templateNames.empty()) Append(m_checked.problems, ProblemsOfEdits(product));
        return;
    }
    m_staging = std::make_unique<Staging>(product.StagingPlace(), m_checked.templates.size);
    m_known = std::make_unique<KnownFiles>(product);
    m_longestText = product.HostHistory().Limits().largestText;
    const OnEdit wanted = onEdit == OnEdit::AsConfigured ? ConfiguredOnEdit(product) : onEdit;
    for (std::size_t i = 0; i < m_checked.targets.size(); ++i) {
        product.RequireGoOn();
        product.Out().Progress(m_targets.size(), m_checked.targets.size());
        Add(m_checked.targets[i], m_checked.places[i], wanted);
    }
    if (templateNames.empty()) {
        m_lines = std::make_unique<LinesPlan>(product, *m_known, *m_staging, wanted);
        if (SetsLines()) WarnOf(product, EditsThatGoOn(product));
        AddTakenBack();
        AddLines();
        JudgeLines(wanted);
        if (TakesBack()) {
            WarnOf(product, conditions.warnings);
            WarnOf(product, conditions.notGiven);
        }
    }
    if (m_checked.problems.empty()) return;
    m_targets.clear();
    m_takenBack.clear();
    m_lines.reset();
}

/// Takes files back as a rollback does, except those in which the lists ask for lines now: they get their
/// original with the lines.
void CommitPlan::AddTakenBack() {
    std::set<std::string> inForce;
    for (const CheckedPlace& place : m_checked.places)
        inForce.insert(place.path);
    for (const PlannedLines& planned : m_lines->Files())
        if (planned.file.original || planned.file.isForgotten) inForce.insert(planned.file.path);
    m_takeBack = std::make_unique<TakeBack>(m_product, *m_known, TakeBack::Ways{.isOfCommit = true});
    for (const std::string& path : m_known->PathsOf(m_product.Role())) {
        m_product.RequireGoOn();
        if (inForce.contains(path)) continue;
        if (std::optional<WrittenFile> file = WrittenByRecord(m_product, path))
            TakeBackFile(std::move(*file));
    }
}

void CommitPlan::TakeBackFile(WrittenFile file) {
    TakeBackStep step{std::move(file)};
    try {
        m_takeBack->Decide(step);
        m_takenBack.push_back(std::move(step));
    } catch (const Failure& failure) {
        m_checked.problems.push_back(ProblemOf(step.file.path, failure));
    }
}

void CommitPlan::AddLines() {
    Append(m_checked.problems, m_lines->Problems());
    for (const std::string& path : m_lines->Emptied())
        TakeBackFile(WrittenLines(m_product, path));
}

/// Whether something was in force until now, be it a line among others.
bool CommitPlan::TakesBack() const {
    return !m_takenBack.empty() || std::any_of(m_lines->Files().begin(), m_lines->Files().end(),
                                               [](const PlannedLines& lines) { return lines.isTakenBack; });
}

bool CommitPlan::IsRecorded() const {
    return IsChange() || !m_product.HasCommitted(m_product.Role()) ||
           (m_lines != nullptr && m_lines->IsNewToRole()) ||
           std::any_of(
               m_targets.begin(), m_targets.end(),
               [](const PlannedTarget& planned) { return !planned.hasWorkingCopy || planned.isNewToRole; }) ||
           std::any_of(m_takenBack.begin(), m_takenBack.end(),
                       [](const TakeBackStep& step) { return step.action != TakeBackStep::Action::Nothing; });
}

bool CommitPlan::IsChange() const {
    return std::any_of(m_targets.begin(), m_targets.end(),
                       [](const PlannedTarget& planned) { return planned.IsChange(); }) ||
           std::any_of(m_takenBack.begin(), m_takenBack.end(),
                       [](const TakeBackStep& step) { return step.IsChange(); }) ||
           (m_lines != nullptr && SetsLines());
}

bool CommitPlan::SetsLines() const {
    return std::any_of(m_lines->Files().begin(), m_lines->Files().end(),
                       [](const PlannedLines& planned) { return planned.IsChange(); });
}

/// An edit that is refused, conflicts, or would be lost is a problem like others. Returns false then.
bool CommitPlan::SettleEdit(PlannedTarget& planned, OnEdit onEdit) {
    if (!planned.IsOthersWork() || onEdit == OnEdit::Overwrite) return true;
    std::vector<Problem> problems;
    if (onEdit == OnEdit::Merge) {
        problems = EditMerge(m_product, *m_staging, *m_known).Merge(planned);
    } else {
        Append(problems, ObjectionTo(m_product, planned, DescribeOthersWork(planned), onEdit, kWaysOfFile));
    }
    Append(m_checked.problems, problems);
    return problems.empty();
}

/// The same for the files of listed edits.
void CommitPlan::JudgeLines(OnEdit onEdit) {
    if (onEdit == OnEdit::Overwrite) return;
    for (const PlannedLines& planned : m_lines->Files()) {
        Append(m_checked.problems, planned.conflicts);
        if (!planned.isEdited || !planned.conflicts.empty()) continue;
        std::optional<Problem> objection =
            ObjectionTo(m_product, planned.file, planned.DescribeOthersWork(), onEdit,
                        planned.file.original ? kWaysOfFile : kWaysOfLine);
        if (objection) objection->line = planned.editedLine;
        Append(m_checked.problems, std::move(objection));
    }
}

void CommitPlan::Add(const Target& target, const CheckedPlace& place, OnEdit onEdit) {
    PlannedTarget planned{place, target};
    const SeenFile there(planned.path, place.status);
    Stage(planned, there);
    FillIn(planned, there);
    EditMerge(m_product, *m_staging, *m_known).KeepMerged(planned);
    if (!SettleEdit(planned, onEdit)) return;
    if (planned.IsChange() && planned.before.exists && !m_product.Wanted().dryRun)
        planned.captured = there.Captured(m_longestText);
    if (RunsOwnChecks(m_product.Wanted()) && !target.check.empty())
        Append(m_checked.problems, OwnCheckProblem(m_product, target, planned.path, planned.staged->File()));
    m_targets.push_back(std::move(planned));
}

/// A target belongs to the host and not to a role: if nothing but the command in its notice would differ, the
/// notice keeps naming the first role that committed it, until that role is rolled back.
void CommitPlan::Stage(PlannedTarget& planned, const SeenFile& there) {
    const std::string& name = planned.target.templateName;
    planned.version = there.Version();
    planned.before = there.State();
    const KnownFile* const known = m_known->Find(planned.path);
    const bool isRecorded = known != nullptr && known->state.knowledge.IsCommitted();
    planned.namedRole = RoleToName(known, m_product.Role());
    const bool isShown = !planned.target.check.empty() && RunsOwnChecks(m_product.Wanted());
    const bool isMerge = known != nullptr && known->HoldsMerge();
    const auto stageFor = [&](Role role) {
        const ComparedRendering rendering = RenderUnlessThere(
            m_product, {*m_staging, name, role, isShown || isMerge, planned.modeOfCopy}, there);
        planned.staged = rendering.staged;
        if (planned.staged == nullptr) return StayAsItIs(planned);
        planned.after = GiveOwnerInPlace(planned.path, *planned.staged, planned.before);
        GiveTo(NewOwnerOf(m_product.HostPaths(), planned.target, planned.path, planned.before),
               planned.after);
        return planned.change = rendering.isOther ? FileOutcome::Result::Changed : ChangeOf(planned);
    };
    const Role role = planned.namedRole;
    if (stageFor(role) != FileOutcome::Result::Changed || isRecorded || !planned.hasCompanion) return;
    const PlannedTarget own = planned;
    const bool isOthers = stageFor(OtherRole(role)) == FileOutcome::Result::Unchanged;
    if (!isOthers) planned = own;
    if (isOthers) planned.namedRole = OtherRole(role);
}

void CommitPlan::FillIn(PlannedTarget& planned, const SeenFile& there) {
    const std::string& path = planned.path;
    const KnownFile* const known = m_known->Find(path);
    const bool isRecorded = known != nullptr && known->state.knowledge.IsCommitted();
    // A history that this user cannot read does not tell.
    planned.isNewToRole = !m_known->IsUnusable() && !m_known->Has(path, m_product.Role());
    const bool isStrange = known != nullptr ? !m_known->IsAsLeft(there)
                                            : planned.hasCompanion && !m_product.HostHistory().IsDenied();
    if (isStrange) planned.foundAs = isRecorded ? FoundAs::Edited : FoundAs::Unrecorded;
    if (planned.HoldsUnkeptText() && HasTextOfReserve(path)) planned.foundAs = FoundAs::Reserved;
    planned.isOriginalLost = planned.IsChange() && known != nullptr && !isStrange && !planned.hasCompanion &&
                             IsOriginalLost(m_product, path);
    if (isRecorded && planned.IsChange())
        WarnOfFormerTemplate(m_product, planned, known->state.knowledge.templateName);
    planned.isUntold = m_cutShort.count(path) != 0 || (known != nullptr && WasCutShort(*known));
}

/// Whether a run that was cut short wrote the file, and a command other than a commit found that out since.
bool CommitPlan::WasCutShort(const KnownFile& known) {
    const auto [found, isNew] = m_entriesCutShort.try_emplace(known.entry);
    if (isNew) found->second = WasCutShort(known.entry);
    return found->second;
}

bool CommitPlan::WasCutShort(std::int64_t number) const {
    Store* const store = m_product.HostHistory().ToLookForWriting();
    const auto entry = store != nullptr ? store->Find(number) : std::nullopt;
    if (!entry || entry->outcome != EntryOutcome::CutShort) return false;
    const std::string status = m_product.State().Status(m_product.Role());
    return !IsFileExist(status) || VersionOf(status).changed < entry->ended;
}

std::size_t CommitPlan::ChecksNotRun() const {
    return CountChecksNotRun(m_product.Wanted(), m_checked.targets);
}

Restarts CommitPlan::Services() const {
    return ServicesOf([](const PlannedTarget&) { return true; });
}

/// Includes what a run that was cut short wrote, since it could not report any services.
Restarts CommitPlan::ServicesOf(const std::function<bool(const PlannedTarget&)>& isMeant) const {
    Restarts restarts;
    for (const PlannedTarget& planned : m_targets) {
        const bool isTold = planned.IsChange() || planned.foundAs != FoundAs::Recorded || planned.isUntold;
        if (isTold && isMeant(planned)) restarts.Add(planned.target, m_product.Role());
    }
    for (const TakeBackStep& step : m_takenBack)
        if (step.IsChange()) restarts.Add(step.file.services);
    if (m_lines == nullptr) return restarts;
    for (const PlannedLines& planned : m_lines->Files()) {
        if (!planned.file.original) continue;
        if (const auto former = WrittenByRecord(m_product, planned.file.path)) restarts.Add(former->services);
    }
    return restarts;
}

}  // namespace ZET::Deploy
