#ifndef ZET_COMMIT_PLAN_H
#define ZET_COMMIT_PLAN_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "deploy/host/FileVersion.h"
#include "deploy/host/Staging.h"
#include "deploy/state/KnownFiles.h"
#include "deploy/state/Lock.h"
#include "deploy/targets/Deployment.h"
#include "deploy/targets/LinesPlan.h"
#include "deploy/targets/PlannedTarget.h"
#include "deploy/targets/Restarts.h"
#include "deploy/targets/TakeBack.h"
#include "deploy/targets/TargetCheck.h"
#include "zet/deploy/OnEdit.h"

namespace ZET::Deploy {

/// What a commit is about to do, or would do. Made under the product's lock, which the plan holds until
/// somebody takes it. A dry run needs no lock.
class CommitPlan {
  public:
    /// Checks the role's targets whose templates `templateNames` has, or all if it is empty. Renders each in
    /// a private directory, has its own check command look at the result, and compares it with what is there.
    /// Throws a `UsageError` for a template that the list does not have, and a `Failure` for a text that
    /// cannot be rendered or that its check refuses.
    CommitPlan(Deployment& product, const std::vector<std::string>& templateNames,
               OnEdit onEdit = OnEdit::AsConfigured);

    /// What keeps the commit from being made. If there is anything, there are no targets.
    const std::vector<Problem>& Problems() const { return m_checked.problems; }

    const std::vector<PlannedTarget>& Targets() const { return m_targets; }
    std::vector<PlannedTarget>& Targets() { return m_targets; }

    /// What the role has committed and is not in force any more, and how it goes back. Empty if templates
    /// were named.
    const std::vector<TakeBackStep>& TakenBack() const { return m_takenBack; }

    /// What becomes of the files in which the lists ask for lines. Null if templates were named, or there are
    /// problems.
    const LinesPlan* Lines() const { return m_lines.get(); }

    /// Whether a file that the lists ask for, or that they asked for, would change.
    bool IsChange() const;

    /// Gives the plan's lock to the caller; null if it has none.
    [[nodiscard]] std::unique_ptr<WriteLock> TakeLock() { return std::move(m_lock); }

    /// Whether the history would get an entry. It would even if the commit only installs a working copy, is
    /// the role's first or a target's that is already as it is to be, or leaves a file to the other role.
    bool IsRecorded() const;

    /// How many check commands of targets were not run, though they could have been.
    std::size_t ChecksNotRun() const;

    /// The services that have to notice that targets change: of all targets, or of those that are meant.
    Restarts Services() const;
    Restarts ServicesOf(const std::function<bool(const PlannedTarget&)>& isMeant) const;

    /// What is known of the files before the commit.
    const KnownFiles& Known() const { return *m_known; }

  private:
    void Add(const Target& target, const CheckedPlace& place, OnEdit onEdit);
    void Stage(PlannedTarget& planned, const SeenFile& there);
    void FillIn(PlannedTarget& planned, const SeenFile& there);
    bool SettleEdit(PlannedTarget& planned, OnEdit onEdit);
    void JudgeLines(OnEdit onEdit);
    void AddTakenBack();
    void AddLines();
    bool TakesBack() const;
    bool SetsLines() const;
    void TakeBackFile(WrittenFile file);
    bool WasCutShort(const KnownFile& known);
    bool WasCutShort(std::int64_t entry) const;

    Deployment& m_product;
    std::unique_ptr<WriteLock> m_lock;
    std::set<std::string> m_cutShort;                ///< what a run that was cut short may have written
    std::map<std::int64_t, bool> m_entriesCutShort;  ///< by entry, for those that were asked for
    CheckedTargets m_checked;
    std::unique_ptr<Staging> m_staging;
    std::unique_ptr<KnownFiles> m_known;
    std::uint64_t m_longestText = 0;  ///< the size of the longest text that the history keeps
    std::vector<PlannedTarget> m_targets;
    std::unique_ptr<TakeBack> m_takeBack;
    std::vector<TakeBackStep> m_takenBack;
    std::unique_ptr<LinesPlan> m_lines;
};

}  // namespace ZET::Deploy

#endif
