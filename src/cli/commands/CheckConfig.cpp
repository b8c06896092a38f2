#include <optional>
#include <utility>

#include "cli/ExitStatus.h"
#include "cli/commands/Commands.h"
#include "deploy/host/Signals.h"
#include "deploy/host/Staging.h"
#include "deploy/state/ParameterCheck.h"
#include "deploy/targets/OwnCheck.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/TargetCheck.h"

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

/// Whether the template can be rendered: the module would never return from some of them.
bool CanRender(Session& session, const Target& target) {
    return !target.path.empty() &&
           CheckTemplateFile(session, target.templateName, session.Config().TemplatesValues()).empty();
}

/// What the target's own check command has against the file that a commit would make.
std::optional<Problem> CheckRendering(Session& session, const Staging& staging, const Target& target) {
    std::string path = target.path;
    try {
        path = session.HostPaths().WithRealDirectory(session.FilePath(target.path));
        return OwnCheckProblem(session, target, path, RenderQuietly(session, staging, target.templateName));
    } catch (const Interrupted&) {
        throw;
    } catch (const Failure& failure) {
        return ProblemOf(path, failure);
    }
}

bool HasLanguage(Session& session) {
    try {
        RequireLanguage(session.Param("ZET_LANG"));
        return true;
    } catch (const Failure&) {
        return false;  // which is a problem of its own already
    }
}

void RunOwnChecks(Session& session, CheckedTargets& checked) {
    RemarkChecksNotRun(session, checked.targets);
    if (!RunsOwnChecks(session.Asked()) || !HasLanguage(session)) return;
    const SignalGuard signals;
    std::optional<Staging> staging;
    for (const Target& target : checked.targets) {
        SignalGuard::Check();
        if (target.check.empty() || !CanRender(session, target)) continue;
        if (!staging) staging.emplace();
        if (std::optional<Problem> problem = CheckRendering(session, *staging, target))
            checked.problems.push_back(std::move(*problem));
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
    RunOwnChecks(session, checked);
    for (const Problem& problem : checked.problems) {
        report.Line(problem.Describe());
        report.Lines(problem.output);
        report.Add("problems", problem.ToFields());
    }
    if (isAll) ReportUnused(session, checked.used);
    if (checked.problems.empty()) report.Remark("no problems found");
    return checked.problems.empty() ? kDone : kFailed;
}

}  // namespace ZET
