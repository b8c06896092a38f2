#include "Commands.h"
#include "ExitStatus.h"
#include "TargetCheck.h"

namespace ZET {

namespace {

void ReportUnused(Session& session, const std::set<std::string>& used) {
    Report& report = session.Out();
    report.AddList("unused_values");
    for (const auto& [placeholder, value] : session.Config().TemplatesValues()) {
        if (used.count(placeholder) != 0) continue;
        report.Detail("no template uses " + placeholder);
        report.Add("unused_values", placeholder);
    }
}

}  // namespace

int RunCheckConfig(Session& session) {
    Report& report = session.Out();
    report.Set("unused_values", nullptr);
    report.AddList("problems");
    const CheckedTargets checked = CheckTargets(session, session.Asked().names);
    for (const Problem& problem : checked.problems) {
        report.Line(problem.Describe());
        report.Add("problems", problem.ToFields());
    }
    // Of a part of the templates, nothing can be said about all.
    if (session.Asked().names.empty()) ReportUnused(session, checked.used);
    if (checked.problems.empty()) report.Remark("no problems found");
    return checked.problems.empty() ? kDone : kFailed;
}

}  // namespace ZET
