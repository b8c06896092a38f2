#ifndef ZET_ROLLBACK_STEP_H
#define ZET_ROLLBACK_STEP_H

#include <memory>
#include <string>
#include <utility>

#include "deploy/host/FileState.h"
#include "deploy/host/Staging.h"
#include "deploy/state/KnownFiles.h"
#include "deploy/targets/Deployment.h"
#include "deploy/targets/WrittenFile.h"
#include "zet/deploy/UndoOptions.h"

namespace ZET::Deploy {

/// What a rollback does to one file.
struct RollbackStep {
    enum class Action { Nothing, PutBack, DropReserve, LeaveToOtherRole, TakeOutBlocks };

    explicit RollbackStep(WrittenFile writtenFile) : file(std::move(writtenFile)) {}

    bool IsChange() const { return action != Action::Nothing && action != Action::LeaveToOtherRole; }

    /// What is told of the file; the states and the difference are none then.
    void Tell(FileOutcome::Result result, const std::string& remark);

    WrittenFile file;
    FileOutcome outcome;
    Action action = Action::Nothing;
    FileVersion version;  ///< before it was looked at
    bool hasReserve = false;
    bool isMissed = false;  ///< it should have been put back, and stays
    std::string text;       ///< what is left without the blocks
};

/// Decides, file by file, what a rollback does.
class RollbackDecision {
  public:
    RollbackDecision(Deployment& product, const KnownFiles& known, const RollBackToOptions& options);

    /// What cannot be read, and damaged markers, are a `Failure`.
    void Decide(RollbackStep& step);

  private:
    void DecideTarget(RollbackStep& step);
    bool DecideEdit(RollbackStep& step);
    void TakeOutBlocks(RollbackStep& step, std::string text, const std::string& remark);
    void PutBack(RollbackStep& step, const FileState& now, const FileState& reserve) const;
    void KeepEdited(RollbackStep& step) const;
    bool IsOwnWork(const WrittenFile& file);
    ShownDiff DiffOf(const WrittenFile& file, const FileState& now, const FileState& reserve) const;
    const Staging& Room();

    Deployment& m_product;
    const KnownFiles& m_known;
    const RollBackToOptions& m_options;
    const Role m_otherRole;
    std::unique_ptr<Staging> m_staging;
};

}  // namespace ZET::Deploy

#endif
