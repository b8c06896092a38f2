#include "deploy/targets/Check.h"

#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/Signals.h"
#include "deploy/host/Staging.h"
#include "deploy/host/Words.h"
#include "deploy/state/Language.h"
#include "deploy/targets/LineProblems.h"
#include "deploy/targets/LinesPlan.h"
#include "deploy/targets/OwnCheck.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/ServiceNames.h"
#include "deploy/targets/TargetCheck.h"
#include "deploy/targets/TemplateFileCheck.h"
#include "deploy/targets/UnknownNames.h"

namespace ZET::Deploy {

namespace {

/// Whether everybody may read what is made from the template. What keeps its mode from being told is a
/// problem of its own.
bool IsMadeForEverybody(Deployment& product, const std::string& templateName) {
    try {
        return (ModeOfRendering(product, templateName) & S_IROTH) != 0;
    } catch (const Failure&) {
        return false;
    }
}

std::vector<Problem> OpenSecrets(Deployment& product, const std::vector<Target>& targets) {
    std::vector<Problem> open;
    for (const Target& target : targets) {
        if (!target.isSecret || target.mode || !IsMadeForEverybody(product, target.templateName)) continue;
        open.push_back({.file = target.file,
                        .line = target.line,
                        .text = Words("[%s] is secret, but everybody may read %s: it gets the mode of its "
                                      "template",
                                      target.templateName, target.path),
                        .remedy = _("give it a mode, such as mode = \"0600\"")});
    }
    return open;
}

/// The placeholders whose values stand in files of their own that not everybody may read.
std::set<std::string> PrivateValues(Deployment& product) {
    std::set<std::string> placeholders;
    for (const auto& [placeholder, file] : product.Values().ValueFiles())
        if (Secrets::IsClosed(file)) placeholders.insert(placeholder);
    return placeholders;
}

/// Private values in files that everybody may read because nobody said otherwise.
std::vector<Problem> OpenValues(Deployment& product, const std::vector<Target>& targets) {
    const std::set<std::string> hidden = PrivateValues(product);
    std::vector<Problem> open;
    for (const Target& target : targets) {
        if (hidden.empty() || target.isSecret || target.mode ||
            !IsMadeForEverybody(product, target.templateName))
            continue;
        std::set<std::string> used;
        Text::ValuesToCheck values(product.TemplateValues(), &used);
        CheckTemplate(product, target.templateName, values);
        for (const std::string& placeholder : hidden)
            if (used.contains(placeholder))
                open.push_back({.file = target.file,
                                .line = target.line,
                                .text = Words("not everybody may read the value of %s, but everybody may "
                                              "read %s, into which [%s] brings it",
                                              placeholder, target.path, target.templateName),
                                .remedy = _("give it mode = \"0600\" and secret = true")});
    }
    return open;
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
        return false;  // already a problem of its own
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
        if (target.check.empty() || target.path.empty()) continue;
        if (!CanBeRendered(product, target.templateName)) continue;
        if (!staging) staging.emplace();
        Append(checked.problems, CheckRendering(product, *staging, target));
    }
}

std::set<std::string> UnusedValues(Deployment& product, const std::set<std::string>& used) {
    std::set<std::string> unused;
    for (const auto& [placeholder, value] : product.TemplateValues()) {
        if (used.count(placeholder) == 0) unused.insert(placeholder);
    }
    return unused;
}

void TellUnknownNames(Deployment& product, const std::set<std::string>& used, CheckResult& result) {
    UnusedParameters unknown = FindUnknownNames(product, used);
    Append(result.problems, std::move(unknown.mistyped));
    Append(result.warnings, std::move(unknown.unused));
}

}  // namespace

CheckResult Check(Deployment& product, const std::vector<std::string>& templateNames) {
    CheckResult result;
    CheckedTargets checked = CheckTargets(product, templateNames);
    if (templateNames.empty()) {
        Append(checked.problems, ProblemsOfEdits(product));
        Append(result.warnings, EditsThatGoOn(product));
        TellUnknownNames(product, checked.templates.used, result);
        result.unusedValues = UnusedValues(product, checked.templates.used);
    }
    Append(result.warnings, OpenSecrets(product, checked.targets));
    Append(result.warnings, OpenValues(product, checked.targets));
    WarnOfServiceNames(product, checked.templates.used);
    result.checksNotRun = CountChecksNotRun(product.Wanted(), checked.targets);
    RunOwnChecks(product, checked);
    result.problems.insert(result.problems.begin(), checked.problems.begin(), checked.problems.end());
    return result;
}

}  // namespace ZET::Deploy
