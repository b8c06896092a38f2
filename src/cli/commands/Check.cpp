#include "deploy/targets/Check.h"
#include "cli/ExitStatus.h"
#include "cli/Fields.h"
#include "cli/FileReport.h"
#include "cli/Translation.h"
#include "cli/commands/Registrations.h"
#include "deploy/host/Failure.h"
#include "deploy/state/ParameterNames.h"

namespace ZET::Cli {

namespace {

struct CheckOptions {
    std::vector<std::string> templates;
    bool runChecks = false;
    bool noChecks = false;
};

void ReportUnused(Report& report, const std::set<std::string>& unused) {
    report.AddList("unused_values");
    for (const std::string& placeholder : unused) {
        report.Detail(Filled(_("no template uses %s"), {placeholder}));
        report.Add("unused_values", Deploy::NameOfPlaceholder(placeholder));
    }
}

int CheckConfig(Session& session, const CheckOptions& asked) {
    session.Wanted().onlyLooks = true;
    session.Wanted().runsChecks = !asked.noChecks;
    session.Wanted().runsChecksOfTree = asked.runChecks;
    Report& report = session.Out();
    report.Set("unused_values", nullptr);
    report.Set("checks_not_run", nullptr);
    report.AddList("problems");
    if (asked.runChecks && asked.noChecks)
        throw UsageError(_("--run-checks and --no-checks exclude each other (leave one of them out)"));
    const CheckResult checked = Check(session.Product(), asked.templates);
    TellChecksNotRun(session, checked.checksNotRun);
    for (const Problem& problem : checked.problems) {
        report.Line(problem.Describe());
        report.Lines(problem.output);
        report.Add("problems", FieldsOf(problem));
    }
    for (const Problem& warning : checked.warnings)
        report.Warning(warning.Describe());
    if (checked.unusedValues) ReportUnused(report, *checked.unusedValues);
    if (checked.problems.empty()) report.Remark(_("no problems found"));
    return checked.problems.empty() ? kDone : kFailed;
}

}  // namespace

void RegisterCheck(CommandLine& line) {
    line.Single(Subject::Product)
        .Add<CheckOptions>("check-config", "Tell every problem of the templates and their targets",
                           CheckConfig)
        .Any("TEMPLATE", &CheckOptions::templates, "Only these templates")
        .Flag("--run-checks", &CheckOptions::runChecks, kRunChecksHelp)
        .Flag("--no-checks", &CheckOptions::noChecks, "Run no check commands of the targets");
}

}  // namespace ZET::Cli
