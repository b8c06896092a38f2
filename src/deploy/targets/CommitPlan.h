#ifndef ZET_COMMIT_PLAN_H
#define ZET_COMMIT_PLAN_H

#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "deploy/host/FileBytes.h"
#include "deploy/host/Staging.h"
#include "deploy/state/KnownFiles.h"
#include "deploy/state/Lock.h"
#include "deploy/targets/Deployment.h"
#include "deploy/targets/ListedEdits.h"
#include "deploy/targets/Restarts.h"
#include "deploy/targets/TakeBack.h"
#include "deploy/targets/TargetCheck.h"
#include "zet/deploy/FileOutcome.h"
#include "zet/deploy/OnEdit.h"

namespace ZET::Deploy {

/// What a commit would do to one target.
struct PlannedTarget {
    Target target;
    std::string path;    ///< of the real file, links followed
    std::string staged;  ///< the file as it would be
    FileOutcome::Result change = FileOutcome::Result::Unchanged;
    bool isTouched = false;     ///< the file is none of those that the roles recorded at their commits
    bool isUnrecorded = false;  ///< the product had to do with the file, but no commit recorded it as it is
    bool isReserved = false;    ///< what the file holds is what its reserve holds
    bool isUntold = false;      ///< what a run that was cut short wrote, whose services nobody was told
    Role namedRole = Role::Client;  ///< the one whose command its notice names
    FileVersion version;            ///< of what was there when the plan was made
    FileState before;
    FileState after;

    bool IsChange() const { return change != FileOutcome::Result::Unchanged; }

    /// Somebody edited or removed the file since the product wrote it.
    bool IsOthersWork() const { return IsChange() && (isTouched || HoldsUnkeptText()); }

    /// Nothing but the file itself has what it holds. What a commit was killed at is as it was reserved.
    bool HoldsUnkeptText() const { return isUnrecorded && before.exists && !isReserved; }
};

/// What a commit is about to do, or would: made under the product's lock, which it holds as long as it lives,
/// unless nothing is going to be written.
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

    /// What the role committed and is not in force any more, and how it goes back; nothing where templates
    /// were named.
    const std::vector<TakeBackStep>& TakenBack() const { return m_takenBack; }
    const TakeBack& Ways() const { return *m_takeBack; }

    /// What becomes of the files in which the lists ask for lines; null where templates were named.
    const ListedEdits* Edits() const { return m_edits.get(); }

    /// Whether something would change.
    bool IsChange() const;

    /// How many check commands of the targets were not run, though they could have been.
    std::size_t ChecksNotRun() const { return m_checksNotRun; }

    /// The services that have to notice that these targets change.
    Restarts ServicesOf(const std::vector<PlannedTarget>& targets) const;

    /// What is known of the files before the commit.
    const KnownFiles& Known() const { return *m_known; }

  private:
    void Add(const Target& target);
    void Stage(PlannedTarget& planned);
    void FillIn(PlannedTarget& planned) const;
    void JudgeEdits(OnEdit onEdit);
    void AddTakenBack();
    void AddEdits();
    void TakeBackFile(const WrittenFile& file);
    bool CanBeKept(const PlannedTarget& planned) const;
    bool WasCutShort(const KnownFile& known) const;

    Deployment& m_product;
    std::unique_ptr<WriteLock> m_lock;
    std::set<std::string> m_cutShort;  ///< what a run that was cut short may have written
    CheckedTargets m_checked;
    std::unique_ptr<Staging> m_staging;
    std::unique_ptr<KnownFiles> m_known;
    std::size_t m_checksNotRun = 0;
    std::vector<PlannedTarget> m_targets;
    std::unique_ptr<TakeBack> m_takeBack;
    std::vector<TakeBackStep> m_takenBack;
    std::unique_ptr<ListedEdits> m_edits;
};

/// What becomes of a target, as far as a plan knows; with the diff, if one is wanted.
FileOutcome OutcomeOf(Deployment& product, const PlannedTarget& planned);

}  // namespace ZET::Deploy

#endif
