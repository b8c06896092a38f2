#include <utility>

#include "Commands.h"
#include "ExitStatus.h"
#include "ParameterCheck.h"
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
    const bool isAll = session.Asked().names.empty();
    CheckedTargets checked = CheckTargets(session, session.Asked().names);
    // Of a part of the templates, nothing can be said about all.
    if (isAll) {
        for (Problem& problem : CheckParameterNames(session, checked.used))
            checked.problems.push_back(std::move(problem));
    }
    for (const Problem& problem : checked.problems) {
        report.Line(problem.Describe());
        report.Add("problems", problem.ToFields());
    }
    if (isAll) ReportUnused(session, checked.used);
    if (checked.problems.empty()) report.Remark("no problems found");
    return checked.problems.empty() ? kDone : kFailed;
}

}  // namespace ZET
