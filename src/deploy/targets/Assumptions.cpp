#include "deploy/targets/Assumptions.h"

#include <set>
#include <string_view>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/targets/ConditionCheck.h"
#include "deploy/targets/LinesPlan.h"
#include "deploy/targets/TargetCheck.h"
#include "deploy/targets/UnknownNames.h"
#include "text/FirstLine.h"
#include "text/Placeholders.h"
#include "zet/ZETErrors.h"
#include "zet/ZETHost.h"

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

/// Whether templates can go wrong by the value, other than by its kind.
bool MayBreakTemplates(const std::string& value) {
    constexpr std::string_view kInEveryMarker = "--";
    return value.empty() || value.find(Text::kPlaceholderBegin) != std::string::npos ||
           value.find(kInEveryMarker) != std::string::npos || Text::MustComeFirst(value);
}

void Give(Deployment& product, const std::string& name, const std::string& value) {
    product.UpdateParam(name, value);
    product.Values().Assume({.name = name, .value = value, .file = kSource});
    product.ForgetValues();
}

std::vector<Problem> ProblemsOfTemplates(Deployment& product) {
    std::vector<Problem> problems = CheckTargets(product, {}).problems;
    Append(problems, ProblemsOfEdits(product));
    return problems;
}

struct Findings {
    std::vector<Problem> problems;
    std::vector<Problem> warnings;
};

Findings FindingsNow(Deployment& product, bool withTemplates) {
    Findings now;
    if (withTemplates) now.problems = ProblemsOfTemplates(product);
    ConditionFindings conditions = CheckConditions(product);
    Append(now.problems, std::move(conditions.problems));
    now.warnings = std::move(conditions.warnings);
    return now;
}

/// What is wrong elsewhere, and comes to light as soon as the parameter has a value that breaks nothing.
std::vector<Problem> HiddenProblems(Deployment& product, const std::string& name) {
    constexpr char kHarmless[] = "0";
    Give(product, name, kHarmless);
    std::vector<Problem> problems = ProblemsOfTemplates(product);
    std::erase_if(problems, [](const Problem& problem) { return problem.file == kSource; });
    return problems;
}

void TakeOut(std::vector<Problem>& problems, const std::vector<Problem>& known) {
    std::set<std::string> told;
    for (const Problem& problem : known)
        told.insert(problem.Describe());
    std::erase_if(problems, [&](const Problem& problem) { return told.contains(problem.Describe()); });
}

/// The caller has just given the value, and needs no name of its place.
Problem ForCaller(Problem problem) {
    if (problem.file == kSource) problem.file.clear();
    return problem;
}

}  // namespace

std::optional<Problem> ProblemInTemplates(Deployment& product, const std::string& name,
                                          const std::string& value) {
    const bool isForTemplates = MayBreakTemplates(value);
    if (!isForTemplates && IsKnownParameter(name)) return std::nullopt;
    try {
        const Findings before = FindingsNow(product, isForTemplates);
        Give(product, name, value);
        auto [problems, warnings] = FindingsNow(product, isForTemplates);
        TakeOut(problems, before.problems);
        if (isForTemplates && !problems.empty()) {
            TakeOut(problems, HiddenProblems(product, name));
            Give(product, name, value);
        }
        if (!problems.empty()) return ForCaller(problems.front());
        TakeOut(warnings, before.warnings);
        for (const Problem& warning : warnings)
            product.Out().Warning(ForCaller(warning).Describe());
        return std::nullopt;
    } catch (const Failure&) {
        return std::nullopt;
    }
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
