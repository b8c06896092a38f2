#include "deploy/targets/CommitPlan.h"

#include <unistd.h>

#include <optional>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Signals.h"
#include "deploy/state/Instructions.h"
#include "deploy/state/PendingRecord.h"
#include "deploy/state/StateDirectory.h"
#include "deploy/targets/OwnCheck.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/Restarts.h"
#include "deploy/targets/ShownDiff.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

void RequireAcceptance(Deployment& product, const Target& target, const std::string& path,
                       const std::string& staged) {
    const std::optional<Problem> problem = OwnCheckProblem(product, target, path, staged);
    if (problem) throw Failure(problem->Describe(), problem->output);
}

FileOutcome::Result ChangeOf(const PlannedTarget& planned) {
    if (!planned.before.exists) return FileOutcome::Result::Created;
    const bool isSame =
        planned.before.mode == planned.after.mode && HaveSameBytes(planned.path, planned.staged);
    return isSame ? FileOutcome::Result::Unchanged : FileOutcome::Result::Changed;
}

/// What the product has on record of the files, for the role that is committed and for the other one.
class Records {
  public:
    Records(HostProduct& product, const Manifest& own) : m_product(product), m_own(own) {}

    void FillIn(PlannedTarget& planned) {
        const std::string& path = planned.path;
        const bool isOwn = m_own.Has(path);
        const bool isStrange =
            (isOwn ? !m_own.IsUntouched(path) : HasCompanion(path)) && !Other().IsUntouched(path);
        planned.isTouched = isOwn && isStrange;
        planned.isUnrecorded = !isOwn && isStrange;
        planned.isReserved = planned.isUnrecorded && planned.before.exists && IsReserved(path);
    }

  private:
    static bool HasCompanion(const std::string& path) {
        return IsFileExist(path + ZETReserveSuffix) || IsFileExist(path + ZETAbsenceSuffix);
    }

    static bool IsReserved(const std::string& path) {
        const std::string reserve = path + ZETReserveSuffix;
        return access(reserve.c_str(), R_OK) == 0 && HaveSameBytes(path, reserve);
    }

    /// Read when it is needed: most commits do without.
    const Manifest& Other() {
        if (!m_other) m_other.emplace(m_product, OtherRole(m_product.Role()));
        return *m_other;
    }

    HostProduct& m_product;
    const Manifest& m_own;
    std::optional<Manifest> m_other;
};

}  // namespace

CommitPlan::CommitPlan(Deployment& product, const std::vector<std::string>& templateNames)
    : m_product(product) {
    const bool isDryRun = product.Wanted().dryRun;
    if (!isDryRun) {
        RequireOwnInstructions(product);
        m_lock = std::make_unique<WriteLock>(product);
        m_cutShort = PendingRecord::ClearAllLeftOvers(product);
    }
    m_checked = CheckTargets(product, templateNames);
    if (!m_checked.problems.empty()) return;
    m_staging = std::make_unique<Staging>(isDryRun ? "" : product.Param("ZET_VAR_LIB_DIR"),
                                          SizeOfTemplates(product, m_checked.targets));
    m_manifest = std::make_unique<Manifest>(product);
    m_checksNotRun = CountChecksNotRun(product.Wanted(), m_checked.targets);
    Records records(product, *m_manifest);
    for (const Target& target : m_checked.targets) {
        product.RequireGoOn();
        product.Out().Progress(m_targets.size(), m_checked.targets.size());
        Add(target);
        records.FillIn(m_targets.back());
    }
}

void CommitPlan::Add(const Target& target) {
    PlannedTarget planned;
    planned.target = target;
    planned.path = m_product.HostPaths().WithRealDirectory(m_product.FilePath(target.path));
    planned.staged = RenderQuietly(m_product, *m_staging, target.templateName);
    if (RunsOwnChecks(m_product.Wanted())) RequireAcceptance(m_product, target, planned.path, planned.staged);
    planned.version = VersionOf(planned.path);
    planned.before = StateOf(planned.path);
    planned.after = StateInPlace(planned.path, planned.staged);
    planned.change = ChangeOf(planned);
    m_targets.push_back(std::move(planned));
}

/// A run that was cut short could tell and record nothing of what it had written; the commands that came
/// after it may have cleared away what it left.
std::vector<std::string> CommitPlan::RestartsOf(const std::vector<PlannedTarget>& targets) const {
    Restarts restarts;
    for (const PlannedTarget& planned : targets) {
        if (planned.IsChange() || planned.isTouched || planned.isUnrecorded ||
            m_cutShort.count(planned.path) != 0)
            restarts.Add(planned.target.RestartsFor(m_product.Role()));
    }
    return restarts.Services();
}

FileOutcome OutcomeOf(Deployment& product, const PlannedTarget& planned) {
    FileOutcome outcome;
    outcome.file = planned.target.path;
    outcome.path = planned.path;
    outcome.result = planned.change;
    outcome.before = planned.before;
    outcome.after = planned.after;
    outcome.templateName = planned.target.templateName;
    outcome.isEdited = planned.IsOthersWork();
    if (planned.IsChange())
        outcome.diff =
            DiffToShow(product, planned.before.exists ? planned.path : "", planned.staged, planned.path);
    return outcome;
}

}  // namespace ZET::Deploy
