#include "deploy/targets/Rollback.h"
#include "cli/ExitStatus.h"
#include "cli/FileReport.h"
#include "cli/commands/Registrations.h"
#include "deploy/host/Companions.h"

namespace ZET::Cli {

namespace {

struct RollbackOptions {
    std::vector<std::string> targets;
    bool force = false;
};

void TellTarget(Session& session, const FileOutcome& outcome) {
    if (!session.Asked().quiet || outcome.IsChange())
        session.Out().Line(outcome.path + ": " + outcome.remark);
    TellDiff(session.Out(), outcome.diff);
    FileOutcome entry = outcome;
    if (outcome.result == FileOutcome::Result::Kept) entry.reserve = ReserveOf(outcome.path);
    AddFile(session, "targets", entry);
}

int RollbackConfig(Session& session, const RollbackOptions& asked) {
    BeginTargets(session, TellTarget);
    const RollbackResult result = RollBack(session.Product(), asked.targets, asked.force);
    if (session.Asked().dryRun && result.isChanged) return kNotInSync;
    return result.isKept ? kFailed : kDone;
}

}  // namespace

void RegisterRollback(CommandLine& line) {
    line.Single(Subject::Product)
        .Add<RollbackOptions>("rollback-config", "Put back what was there before the first commit",
                              RollbackConfig)
        .Any("TARGET", &RollbackOptions::targets, "Only these files")
        .Flag("--force", &RollbackOptions::force, "Files that were edited since, too");
}

}  // namespace ZET::Cli
