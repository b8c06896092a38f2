#include "Commands.h"
#include "ExitStatus.h"
#include "TargetCheck.h"
#include "Targets.h"

namespace ZET {

int RunCheckConfig(Session& session) {
    Report& report = session.Out();
    std::vector<Problem> problems = ReadTargetList(session).problems;
    std::set<std::string> used;
    if (problems.empty()) {
        const std::vector<Target> targets = SelectTargets(session, session.Asked().names);
        problems = CheckTargets(session, targets, &used);
        for (const auto& [placeholder, value] : session.Config().TemplatesValues()) {
            if (used.count(placeholder) == 0) report.Detail("no template uses " + placeholder);
        }
    }
    report.AddList("problems");
    for (const Problem& problem : problems) {
        report.Line(problem.Describe());
        report.Add("problems", problem.ToFields());
    }
    if (problems.empty()) report.Remark("no problems found");
    return problems.empty() ? kDone : kFailed;
}

}  // namespace ZET
