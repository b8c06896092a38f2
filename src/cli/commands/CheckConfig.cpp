#include "cli/ExitStatus.h"
#include "cli/Fields.h"
#include "cli/FileReport.h"
#include "cli/commands/Commands.h"
#include "deploy/targets/Check.h"

namespace ZET {

namespace {

void ReportUnused(Report& report, const std::set<std::string>& unused) {
    report.AddList("unused_values");
    for (const std::string& placeholder : unused) {
        report.Detail("no template uses " + placeholder);
        report.Add("unused_values", placeholder);
    }
}

}  // namespace

int RunCheckConfig(Session& session) {
    Report& report = session.Out();
    report.Set("unused_values", nullptr);
    report.AddList("problems");
    const CheckResult checked = Check(session.Product(), session.Asked().names);
    TellChecksNotRun(session, checked.checksNotRun);
    for (const Problem& problem : checked.problems) {
        report.Line(problem.Describe());
        report.Lines(problem.output);
        report.Add("problems", FieldsOf(problem));
    }
    if (checked.unusedValues) ReportUnused(report, *checked.unusedValues);
    if (checked.problems.empty()) report.Remark("no problems found");
    return checked.problems.empty() ? kDone : kFailed;
}

}  // namespace ZET
