#include "cli/FileReport.h"

#include "cli/ExitStatus.h"
#include "cli/Fields.h"
#include "deploy/host/FileState.h"
#include "deploy/targets/ShownDiff.h"

namespace ZET::Cli {

namespace {

std::string Text(const FileOutcome& outcome, bool isDryRun) {
    std::string text = outcome.path + ": ";
    if (outcome.IsChange()) {
        text += (isDryRun ? "would be " : "") + std::string(NameOf(outcome.result));
        const std::string attributes =
            outcome.before.exists ? DescribeChange(outcome.before, outcome.after) : "";
        if (!attributes.empty()) text += ", " + attributes;
    } else {
        text += NameOf(outcome.result);
    }
    return outcome.remark.empty() ? text : text + ", " + outcome.remark;
}

}  // namespace

void BeginFileReport(Session& session) {
    session.Out().Set("dry_run", session.Asked().dryRun);
    session.Out().Set("entry", nullptr);
    session.Out().AddList("files");
}

int ReportFile(Session& session, const FileOutcome& outcome, const char* list) {
    const GlobalOptions& asked = session.Asked();
    Report& out = session.Out();
    AddFile(session, list, outcome);
    if (!asked.quiet || outcome.IsChange()) out.Line(Text(outcome, asked.dryRun));
    TellDiff(out, outcome.diff);
    return asked.dryRun && outcome.IsChange() ? kNotInSync : kDone;
}

void TellDiff(Report& report, const ShownDiff& diff) {
    report.Diff(diff.text);
    for (const std::string& place : diff.places)
        report.Line(place + " (" + diff.excuse + ")");
}

void AddFile(Session& session, const char* list, const FileOutcome& outcome, const Value& edited) {
    if (!session.Asked().json) return;  // it takes looking into lists and files
    Deployment& product = session.Product();
    session.Out().Add(list, FieldsOf(outcome, product.HostPaths().RealName(outcome.path),
                                     IsPrivate(product, outcome), edited));
}

void BeginTargets(Session& session, Session::FileTeller teller) {
    session.TellFilesBy(teller);
    session.Out().Set("role", NameOf(session.Asked().role));
    session.Out().Set("dry_run", session.Asked().dryRun);
    session.Out().Set("entry", nullptr);
    session.Out().AddList("targets");
    session.Out().AddList("restart");
    session.Out().AddList("reload");
}

void TellChecksNotRun(Session& session, std::size_t count) {
    session.Out().Set("checks_not_run", static_cast<std::int64_t>(count));
    if (count == 0 || !session.Wanted().runsChecks) return;
    session.Out().Remark(std::to_string(count) + (count == 1 ? " check command" : " check commands") +
                         " of the tree " + (count == 1 ? "was" : "were") +
                         " not run (--run-checks runs them, on this host)");
}

void TellResults(Session& session) {
    using Result = FileOutcome::Result;
    if (session.Asked().quiet) return;
    std::string text;
    for (const Result result : {Result::Created, Result::Changed, Result::Restored, Result::Removed,
                                Result::Kept, Result::Unchanged}) {
        const auto count = session.Results().find(result);
        if (count == session.Results().end()) continue;
        const bool isTrial = session.Asked().dryRun && result != Result::Unchanged && result != Result::Kept;
        text += (text.empty() ? "" : ", ") + std::to_string(count->second) + (isTrial ? " would be " : " ") +
                NameOf(result);
    }
    session.Out().Line(text.empty() ? "no targets" : text);
}

static void TellServices(Session& session, const std::vector<std::string>& services, const char* list,
                         const char* deed) {
    std::string names;
    for (const std::string& service : services) {
        session.Out().Add(list, service);
        names += (names.empty() ? "" : ", ") + service;
    }
    if (names.empty() || session.Asked().quiet) return;
    session.Out().Line((session.Asked().dryRun ? "would have to be " : "to be ") + std::string(deed) + ": " +
                       names);
}

void TellRestarts(Session& session, const std::vector<std::string>& services) {
    TellServices(session, services, "restart", "restarted");
}

void TellReloads(Session& session, const std::vector<std::string>& services) {
    TellServices(session, services, "reload", "reloaded");
}

}  // namespace ZET::Cli
