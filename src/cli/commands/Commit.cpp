#include "deploy/targets/Commit.h"
#include "cli/Assignments.h"
#include "cli/ExitStatus.h"
#include "cli/FileReport.h"
#include "cli/Translation.h"
#include "cli/commands/Registrations.h"
#include "deploy/host/Companions.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Signals.h"
#include "deploy/state/History.h"
#include "deploy/targets/Assumptions.h"

namespace ZET::Cli {

namespace {

struct CommitOptions {
    std::vector<std::string> templates;
    bool runChecks = false;
    std::vector<std::string> assignments;
    std::string onEdit;
};

OnEdit OnEditOf(const CommitOptions& asked) {
    if (asked.onEdit.empty()) return OnEdit::AsConfigured;
    if (asked.onEdit == "merge") return OnEdit::Merge;
    return asked.onEdit == "refuse" ? OnEdit::Refuse : OnEdit::Overwrite;
}

std::string Describe(const FileOutcome& outcome, bool isDryRun) {
    if (!outcome.remark.empty()) return outcome.remark;
    if (!outcome.IsChange()) return ResultText(outcome.result, false);
    std::string text = ResultText(outcome.result, isDryRun);
    const std::string attributes = DescribeChange(outcome.before, outcome.after);
    if (!attributes.empty()) text += ", " + attributes;
    if (!outcome.reserve.empty()) text += ", " + Filled(_("the original is kept as %s"), {outcome.reserve});
    return text;
}

/// Where the original is kept or, in a dry run, would be kept.
std::string ReserveBeside(const FileOutcome& outcome) {
    if (outcome.result == FileOutcome::Result::Changed) return ReserveAfterChange(outcome.path);
    return outcome.result == FileOutcome::Result::Unchanged ? ReserveOf(outcome.path) : "";
}

void TellCommitted(Session& session, const FileOutcome& outcome) {
    if (session.Asked().json) {
        FileOutcome entry = outcome;
        entry.reserve = ReserveBeside(outcome);
        const bool isUntold = session.Product().HostHistory().IsDenied();
        AddFile(session, "targets", entry, isUntold ? Value(nullptr) : Value(outcome.isEdited));
    }
    if (outcome.IsChange() || outcome.result == FileOutcome::Result::Kept || session.Asked().verbose)
        session.Out().Line(outcome.path + ": " + Describe(outcome, session.Asked().dryRun));
    TellDiff(session.Out(), outcome.diff);
}

int CommitConfig(Session& session, const CommitOptions& asked) {
    session.Wanted().runsChecksOfTree = asked.runChecks;
    const SignalGuard signals;
    BeginTargets(session, TellCommitted);
    session.Out().Set("checks_not_run", nullptr);
    session.Out().AddList("problems");
    const StringMap assumed = ParseAssignments(asked.assignments, "--set");
    AssumeDirectories(session.Wanted(), assumed);
    Deployment& product = session.Product();
    AssumeParameters(product, assumed);
    CommitPlan plan(product, asked.templates, OnEditOf(asked));
    if (TellRefusal(session, plan.Problems())) return kFailed;
    TellChecksNotRun(session, plan.ChecksNotRun());
    bool wouldChange = false;
    if (session.Asked().dryRun) {
        wouldChange = Preview(product, plan);
    } else {
        Commit(product, plan);
    }
    TellResults(session);
    return wouldChange ? kNotInSync : kDone;
}

}  // namespace

void RegisterCommit(CommandLine& line) {
    line.Single(Subject::Product)
        .Add<CommitOptions>("commit-config", "Render the templates of the role into their targets",
                            CommitConfig)
        .Any("TEMPLATE", &CommitOptions::templates, "Only these templates")
        .Flag("--run-checks", &CommitOptions::runChecks, kRunChecksHelp)
        .Assignments("--set", &CommitOptions::assignments, "With -n: as if a parameter had this value")
        .Choice("--on-edit", {"overwrite", "merge", "refuse"}, &CommitOptions::onEdit,
                "What to do with a target that somebody edited");
}

}  // namespace ZET::Cli
