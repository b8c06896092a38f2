#include "deploy/targets/Rollback.h"
#include "cli/ChangeNumber.h"
#include "cli/ExitStatus.h"
#include "cli/FileReport.h"
#include "cli/Translation.h"
#include "cli/commands/Registrations.h"
#include "cli/commands/UndoReport.h"
#include "deploy/host/Companions.h"
#include "deploy/host/Failure.h"

namespace ZET::Cli {

namespace {

struct RollbackOptions {
    std::vector<std::string> targets;
    std::vector<std::string> entry;
    bool force = false;
    bool keepEdits = false;
    bool merge = false;
};

void TellTakenBack(Session& session, const FileOutcome& outcome) {
    if (!session.Asked().quiet || outcome.IsChange() || outcome.result == FileOutcome::Result::Failed)
        session.Out().Line(outcome.path + ": " + outcome.remark);
    TellDiff(session.Out(), outcome.diff);
    FileOutcome entry = outcome;
    if (outcome.result == FileOutcome::Result::Kept) entry.reserve = ReserveOf(outcome.path);
    AddFile(session, "targets", entry);
}

int RollBackToEntry(Session& session, const RollbackOptions& asked) {
    BeginTargets(session,
                 [](Session& told, const FileOutcome& outcome) { ReportFile(told, outcome, "targets"); });
    session.Out().AddList("problems");
    if (asked.entry.size() > 1 || !asked.targets.empty())
        throw UsageError(_("--to takes one change, and goes back to it as a whole (leave TARGET out)"));
    const std::int64_t entry = ChangeNumber(asked.entry.front());
    return ReportUndo(session,
                      RollBackTo(session.Product(), entry, {asked.force, asked.keepEdits, asked.merge}));
}

int RollbackConfig(Session& session, const RollbackOptions& asked) {
    if (!asked.entry.empty()) return RollBackToEntry(session, asked);
    BeginTargets(session, TellTakenBack);
    if (asked.merge)
        throw UsageError(_("--merge goes with --to alone (--keep-edits leaves what was edited)"));
    if (asked.force && asked.keepEdits)
        throw UsageError(_("--force and --keep-edits exclude each other (leave one of them out)"));
    const RollbackResult result = RollBack(session.Product(), asked.targets, {asked.force, asked.keepEdits});
    if (result.isKept) return kFailed;
    return StatusAfter(session, result.isChanged);
}

}  // namespace

void RegisterRollback(CommandLine& line) {
    line.Single(Subject::Product)
        .Add<RollbackOptions>("rollback-config", "Take back the role's commits and all edits in place",
                              RollbackConfig)
        .Any("TARGET", &RollbackOptions::targets, "Only these files")
        .Flag("--force", &RollbackOptions::force, "Files that were edited since, too")
        .Flag("--keep-edits", &RollbackOptions::keepEdits, "Leave those as they are, which is no failure")
        .Flag("--merge", &RollbackOptions::merge, "With --to: leave what was edited since in them")
        .List("--to", "NUMBER", &RollbackOptions::entry,
              "All files of both roles as they were after this change");
}

}  // namespace ZET::Cli
