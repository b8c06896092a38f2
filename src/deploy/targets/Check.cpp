#include "deploy/targets/Check.h"

#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Signals.h"
#include "deploy/host/Staging.h"
#include "deploy/host/Words.h"
#include "deploy/state/Language.h"
#include "deploy/state/ParameterCheck.h"
#include "deploy/targets/ListedEdits.h"
#include "deploy/targets/OwnCheck.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/ServiceNames.h"
#include "deploy/targets/TargetCheck.h"
#include "text/Lines.h"
#include "text/Placeholders.h"

namespace ZET::Deploy {

namespace {

/// Whether the template can be rendered: the module would never return from some of them.
bool CanRender(Deployment& product, const Target& target) {
    return !target.path.empty() &&
           CheckTemplateFile(product, target.templateName, product.TemplateValues()).empty();
}

/// What the target's own check command has against the file that a commit would make.
std::optional<Problem> CheckRendering(Deployment& product, const Staging& staging, const Target& target) {
    std::string path = target.path;
    try {
        path = product.HostPaths().WithRealDirectory(product.FilePath(target.path));
        return OwnCheckProblem(product, target, path,
                               RenderQuietly(product, staging, target.templateName, product.Role()));
    } catch (const Failure& failure) {
        return ProblemOf(path, failure);
    }
}

bool HasLanguage(IZETCore& core) {
    try {
        RequireLanguage(core.GetParam("ZET_LANG"));
        return true;
    } catch (const Failure&) {
        return false;  // which is a problem of its own already
    }
}

void RunOwnChecks(Deployment& product, CheckedTargets& checked) {
    if (!RunsOwnChecks(product.Wanted()) || !HasLanguage(product.Core())) return;
    const SignalGuard signals;
    std::optional<Staging> staging;
    std::size_t done = 0;
    for (const Target& target : checked.targets) {
        product.RequireGoOn();
        product.Out().Progress(done++, checked.targets.size());
        if (target.check.empty() || !CanRender(product, target)) continue;
        if (!staging) staging.emplace();
        if (std::optional<Problem> problem = CheckRendering(product, *staging, target))
            checked.problems.push_back(std::move(*problem));
    }
}

std::set<std::string> UnusedValues(Deployment& product, const std::set<std::string>& used) {
    std::set<std::string> unused;
    for (const auto& [placeholder, value] : product.TemplateValues()) {
        if (used.count(placeholder) == 0) unused.insert(placeholder);
    }
    return unused;
}

/// Those of templates that were not checked, too: of the other role, and of what is not in force.
std::set<std::string> UsedAnywhere(Deployment& product, const std::set<std::string>& used) {
    std::set<std::string> all = used;
    const auto take = [&](std::string_view line) {
        for (std::string& placeholder : Text::PlaceholdersOf(line))
            all.insert(std::move(placeholder));
    };
    const auto takeLines = [&](std::string_view lines) {
        while (!lines.empty())
            take(Text::TakeLine(lines).text);
    };
    for (const Target& target : product.Lists().Targets().targets) {
        const std::string file = TemplateFile(product, target.templateName);
        try {
            if (!file.empty() && product.HostPaths().StaysInside(file)) ReadChunks(file, takeLines);
        } catch (const Failure&) {
            // Whoever wants to render it is told why.
        }
    }
    // What begins like a comment has placeholders there, too.
    for (const ListedEdit& edit : product.Lists().Targets().edits)
        take("=" + edit.value + edit.text);
    for (const auto& [placeholder, value] : product.Values().Own())
        take("=" + value);
    const std::set<std::string>& clashing = product.Values().Clashing();
    all.insert(clashing.begin(), clashing.end());
    return all;
}

void FindUnused(Deployment& product, const std::set<std::string>& used, CheckResult& result) {
    HostValues& values = product.Values();
    std::vector<GivenParameter> given = values.GivenByFleet();
    std::set<std::string> asked;
    for (const Target& target : product.Lists().Targets().targets)
        asked.insert(target.when.parameter);
    for (const ListedEdit& edit : product.Lists().Targets().edits)
        asked.insert(edit.when.parameter);
    given.insert(given.end(), values.GivenByMain().begin(), values.GivenByMain().end());
    UnusedParameters unused = FindUnusedParameters(product.Param("ZET_CFG"), given, used, asked);
    result.warnings = std::move(unused.unused);
    for (Problem& problem : unused.mistyped)
        result.problems.push_back(std::move(problem));
    for (const auto& [placeholder, file] : values.ValueFiles()) {
        if (!used.contains(placeholder))
            result.warnings.push_back({.file = file,
                                       .text = Words("nothing uses %s", placeholder),
                                       .remedy = _("correct its name, or remove the file")});
    }
}

}  // namespace

CheckResult Check(Deployment& product, const std::vector<std::string>& templateNames) {
    CheckResult result;
    CheckedTargets checked = CheckTargets(product, templateNames);
    if (templateNames.empty()) {
        for (Problem& problem : ProblemsOfEdits(product))
            checked.problems.push_back(std::move(problem));
        FindUnused(product, UsedAnywhere(product, checked.templates.used), result);
        result.unusedValues = UnusedValues(product, checked.templates.used);
    }
    WarnOfServiceNames(product, checked.templates.used);
    result.checksNotRun = CountChecksNotRun(product.Wanted(), checked.targets);
    RunOwnChecks(product, checked);
    result.problems.insert(result.problems.begin(), checked.problems.begin(), checked.problems.end());
    return result;
}

}  // namespace ZET::Deploy
