#include "deploy/targets/Assumptions.h"

#include <algorithm>
#include <set>

#include "deploy/host/Failure.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/targets/TargetCheck.h"
#include "deploy/targets/UnknownNames.h"
#include "text/Placeholders.h"
#include "zet/ZETErrors.h"

namespace ZET::Deploy {

namespace {

constexpr char kSource[] = "--set";

[[noreturn]] void Refuse(const std::string& text, const std::string& remedy) {
    throw UsageError(Problem{.file = kSource, .text = text, .remedy = remedy}.Describe());
}

void RequireValue(const std::string& name, const std::string& value) {
    if (const auto problem = ProblemOfParam(name, value)) Refuse(problem->text, problem->remedy);
}

void Assume(Deployment& product, const std::string& name, const std::string& value) {
    if (name != "ZET_CFG") {
        RequireValue(name, value);
        if (const auto problem = product.Values().ProblemOfName(name)) Refuse(problem->text, problem->remedy);
    }
    try {
        if (!IsOwnDirectory(name)) product.UpdateParam(name, value);
    } catch (const EZETCheckError& error) {
        const char* remedy =
            name == "ZET_CFG" ? _("name another file with --config") : _("write one of the two");
        throw UsageError(std::string("--set: ") + FailureOf(error, remedy).what());
    }
    product.Values().Assume({.name = name, .value = value, .file = kSource});
}

/// A parameter may have any name, but an unknown one is rarely meant.
void WarnIfUnknown(Deployment& product, const std::string& name) {
    const auto warn = [&](const Problem& problem, const std::string& remedy) {
        product.Out().Warning(Problem{.file = kSource, .text = problem.text, .remedy = remedy}.Describe());
    };
    const UnusedParameters judged = JudgeName(product, name);
    for (const Problem& problem : judged.mistyped)
        warn(problem, problem.remedy);
    for (const Problem& problem : judged.unused)
        warn(problem, _("correct its name"));
}

/// Whether a check blames the value of the parameter that is assumed, or what it leads to.
bool IsOfAssumed(const Problem& problem, const std::vector<std::string>& placeholders) {
    return problem.file == kSource ||
           std::find(placeholders.begin(), placeholders.end(), problem.quoted) != placeholders.end();
}

}  // namespace

std::optional<Problem> ProblemInTemplates(Deployment& product, const std::string& name,
                                          const std::string& value) {
    try {
        std::set<std::string> before;
        for (const Problem& problem : CheckTargets(product, {}).problems)
            before.insert(problem.Describe());
        product.UpdateParam(name, value);
        product.Values().Assume({.name = name, .value = value, .file = kSource});
        product.ForgetValues();
        const std::vector<std::string> placeholders = Text::PlaceholdersOfValue(value);
        for (Problem& problem : CheckTargets(product, {}).problems) {
            if (!IsOfAssumed(problem, placeholders) || before.contains(problem.Describe())) continue;
            if (problem.file == kSource) problem.file.clear();
            return std::optional(std::move(problem));
        }
    } catch (const Failure&) {
        return std::nullopt;
    }
    return std::nullopt;
}

void AssumeDirectories(Options& options, const StringMap& values) {
    if (!options.dryRun) return;
    for (const auto& [name, value] : values) {
        if (!IsOwnDirectory(name)) continue;
        RequireValue(name, value);
        options.directories[name] = value;
    }
}

void AssumeParameters(Deployment& product, const StringMap& values) {
    if (values.empty()) return;
    if (!product.Wanted().dryRun)
        throw UsageError(
            _("--set only asks what would change: use it with -n (\"option set\" sets a parameter)"));
    for (const auto& [name, value] : values)
        Assume(product, name, value);
    product.ForgetValues();
    for (const auto& [name, value] : values)
        WarnIfUnknown(product, name);
}

}  // namespace ZET::Deploy
