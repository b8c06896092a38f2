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
#include "deploy/targets/ListedEdits.h"
#include "deploy/targets/PlannedTarget.h"
#include "deploy/targets/Restarts.h"
#include "deploy/targets/TakeBack.h"
#include "deploy/targets/TargetCheck.h"
#include "zet/deploy/OnEdit.h"

namespace ZET::Deploy {

/// What a commit is about to do, or would: made under the product's lock, which it holds as long as it lives
/// and nobody takes it, unless nothing is going to be written.
class CommitPlan {
  public:
    /// Checks the targets of the role whose templates `templateNames` has, all when it is empty; renders each
    /// in a private directory, has its own check command look at the result, and compares it with what is
    /// there. A template that the list does not have is a `UsageError`; what cannot be rendered or is refused
    /// by its check is a `Failure`.
    CommitPlan(Deployment& product, const std::vector<std::string>& templateNames,
               OnEdit onEdit = OnEdit::AsConfigured);

    /// What keeps the commit from being made; there are no targets then.
    const std::vector<Problem>& Problems() const { return m_checked.problems; }

    const std::vector<PlannedTarget>& Targets() const { return m_targets; }
    std::vector<PlannedTarget>& Targets() { return m_targets; }

    /// What the role committed and is not in force any more, and how it goes back; nothing where templates
    /// were named.
    const std::vector<TakeBackStep>& TakenBack() const { return m_takenBack; }
    const TakeBack& Ways() const { return *m_takeBack; }

    /// What becomes of the files in which the lists ask for lines; null where templates were named.
    const ListedEdits* Edits() const { return m_edits.get(); }

    /// Whether a file that the lists ask for, or that they asked for, would change.
    bool IsChange() const;

    /// The lock that it holds, from now on the caller's; null: none.
    [[nodiscard]] std::unique_ptr<WriteLock> TakeLock() { return std::move(m_lock); }

    /// Whether the history would get an entry: also for a commit that only installs a working copy, that is
    /// the role's first, or that of a target which is as it is to be already, or that leaves a file to the
    /// other role.
    bool IsRecorded() const;

    /// How many check commands of the targets were not run, though they could have been.
    std::size_t ChecksNotRun() const { return m_checksNotRun; }

    /// The services that have to notice that the targets change, or those of them that are meant.
    Restarts Services() const;
    Restarts ServicesOf(const std::function<bool(const PlannedTarget&)>& isMeant) const;

    /// What is known of the files before the commit.
    const KnownFiles& Known() const { return *m_known; }

  private:
    void Add(const Target& target, const CheckedPlace& place, OnEdit onEdit);
    void Stage(PlannedTarget& planned, const SeenFile& there);
    void FillIn(PlannedTarget& planned, const SeenFile& there);
    bool SettleEdit(PlannedTarget& planned, OnEdit onEdit);
    void JudgeListedEdits(OnEdit onEdit);
    void AddTakenBack();
    void AddEdits();
    void TakeBackFile(WrittenFile file);
    bool WasCutShort(const KnownFile& known);
    bool WasCutShort(std::int64_t entry) const;

    Deployment& m_product;
    std::unique_ptr<WriteLock> m_lock;
    std::set<std::string> m_cutShort;                ///< what a run that was cut short may have written
    std::map<std::int64_t, bool> m_entriesCutShort;  ///< those that were asked for
    CheckedTargets m_checked;
    std::unique_ptr<Staging> m_staging;
    std::unique_ptr<KnownFiles> m_known;
    std::uint64_t m_longestText = 0;  ///< that the history keeps
    std::size_t m_checksNotRun = 0;
    std::set<std::string> m_inForce;  ///< the files of the checked targets
    std::vector<PlannedTarget> m_targets;
    std::unique_ptr<TakeBack> m_takeBack;
    std::vector<TakeBackStep> m_takenBack;
    std::unique_ptr<ListedEdits> m_edits;
};

}  // namespace ZET::Deploy

#endif
