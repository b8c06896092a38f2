#include "cli/FileReport.h"
#include "cli/Translation.h"

#include "cli/ExitStatus.h"
#include "cli/Fields.h"
#include "deploy/host/FileState.h"
#include "deploy/targets/ShownDiff.h"

namespace ZET::Cli {

namespace {

std::string Text(const FileOutcome& outcome, bool isDryRun) {
    std::string text = outcome.path + ": ";
    if (outcome.IsChange()) {
        text += ResultText(outcome.result, isDryRun);
        const std::string attributes =
            outcome.before.exists ? DescribeChange(outcome.before, outcome.after) : "";
        if (!attributes.empty()) text += ", " + attributes;
    } else {
        text += ResultText(outcome.result, false);
    }
    return outcome.remark.empty() ? text : text + ", " + outcome.remark;
}

/// "1 changed"
std::string CountOf(FileOutcome::Result result, std::size_t count, bool isDryRun) {
    switch (result) {
        case FileOutcome::Result::Unchanged:
            return Counted("%s unchanged", "%s unchanged", count);
        case FileOutcome::Result::Kept:
            return Counted("%s kept", "%s kept", count);
        case FileOutcome::Result::Created:
            return isDryRun ? Counted("%s would be created", "%s would be created", count)
                            : Counted("%s created", "%s created", count);
        case FileOutcome::Result::Restored:
            return isDryRun ? Counted("%s would be restored", "%s would be restored", count)
                            : Counted("%s restored", "%s restored", count);
        case FileOutcome::Result::Removed:
            return isDryRun ? Counted("%s would be removed", "%s would be removed", count)
                            : Counted("%s removed", "%s removed", count);
        default:
            return isDryRun ? Counted("%s would be changed", "%s would be changed", count)
                            : Counted("%s changed", "%s changed", count);
    }
}

}  // namespace

const char* ResultText(FileOutcome::Result result, bool isDryRun) {
    constexpr const char* kDone[] = {ZET_TEXT("unchanged"), ZET_TEXT("created"),  ZET_TEXT("changed"),
                                     ZET_TEXT("reserved"),  ZET_TEXT("restored"), ZET_TEXT("forgotten"),
                                     ZET_TEXT("removed"),   ZET_TEXT("kept"),     ZET_TEXT("failed")};
    constexpr const char* kForeseen[] = {kDone[0],
                                         ZET_TEXT("would be created"),
                                         ZET_TEXT("would be changed"),
                                         ZET_TEXT("would be reserved"),
                                         ZET_TEXT("would be restored"),
                                         ZET_TEXT("would be forgotten"),
                                         ZET_TEXT("would be removed"),
                                         kDone[7],
                                         kDone[8]};
    return _((isDryRun ? kForeseen : kDone)[static_cast<std::size_t>(result)]);
}

int StatusAfter(const Session& session, bool isChange) {
    return session.Asked().dryRun && isChange ? kNotInSync : kDone;
}

void BeginFileReport(Session& session) {
    session.Out().Set("dry_run", session.Asked().dryRun);
    session.Out().Set("entry", nullptr);
    session.Out().AddList("files");
}

bool TellProblems(Session& session, const std::vector<Problem>& problems) {
    for (const Problem& problem : problems) {
        session.Out().Error(problem.Describe(), problem.output);
        session.Out().Add("problems", FieldsOf(problem));
    }
    return !problems.empty();
}

bool TellRefusal(Session& session, const std::vector<Problem>& problems) {
    const bool isRefused = TellProblems(session, problems);
    if (isRefused) session.Out().Remark(_("nothing was changed"));
    return isRefused;
}

int ReportFile(Session& session, const FileOutcome& outcome, const char* list) {
    const GlobalOptions& asked = session.Asked();
    Report& out = session.Out();
    AddFile(session, list, outcome);
    if (!asked.quiet || outcome.IsChange()) out.Line(Text(outcome, asked.dryRun));
    TellDiff(out, outcome.diff);
    return StatusAfter(session, outcome.IsChange());
}

void TellFile(Session& session, const FileOutcome& outcome) {
    ReportFile(session, outcome);
}

void TellDiff(Report& report, const ShownDiff& diff) {
    report.Diff(diff.text);
    for (const std::string& place : diff.places)
        report.Line(place + " (" + diff.excuse + ")");
}

void AddFile(Session& session, const char* list, const FileOutcome& outcome, const Value& edited) {
    if (!session.Asked().json) return;  // it requires reading lists and files
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
    session.Out().Remark(
        Counted("%s check command of the tree was not run (--run-checks runs them, on this host)",
                "%s check commands of the tree were not run (--run-checks runs them, on this host)", count));
}

void TellResults(Session& session) {
    using Result = FileOutcome::Result;
    if (session.Asked().quiet) return;
    std::string text;
    for (const Result result : {Result::Created, Result::Changed, Result::Restored, Result::Removed,
                                Result::Kept, Result::Unchanged}) {
        const auto count = session.Results().find(result);
        if (count == session.Results().end()) continue;
        text += (text.empty() ? "" : ", ") + CountOf(result, count->second, session.Asked().dryRun);
    }
    session.Out().Line(text.empty() ? _("no targets") : text);
}

static void TellDuty(Session& session, const std::string& names, const char* text) {
    if (names.empty() || session.Asked().quiet) return;
    session.Out().Line(Filled(_(text), {names}));
}

/// Among the services, a command is recognised by its blanks.
static void TellServices(Session& session, const std::vector<std::string>& services, const char* list,
                         const char* text) {
    std::string names;
    std::string commands;
    for (const std::string& service : services) {
        session.Out().Add(list, service);
        std::string& told = service.find(' ') == std::string::npos ? names : commands;
        told += (told.empty() ? "" : ", ") + service;
    }
    TellDuty(session, names, text);
    TellDuty(session, commands,
             session.Asked().dryRun ? ZET_TEXT("would have to be run: %s") : ZET_TEXT("to be run: %s"));
}

void TellRestarts(Session& session, const std::vector<std::string>& services) {
    TellServices(session, services, "restart",
                 session.Asked().dryRun ? ZET_TEXT("would have to be restarted: %s")
                                        : ZET_TEXT("to be restarted: %s"));
}

void TellReloads(Session& session, const std::vector<std::string>& services) {
    TellServices(
        session, services, "reload",
        session.Asked().dryRun ? ZET_TEXT("would have to be reloaded: %s") : ZET_TEXT("to be reloaded: %s"));
}

}  // namespace ZET::Cli
