#include "deploy/targets/UnknownNames.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Words.h"
#include "deploy/state/ParameterNames.h"
#include "deploy/targets/ConditionCheck.h"
#include "deploy/targets/TemplateFiles.h"
#include "text/Lines.h"
#include "text/Placeholders.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {

namespace {

/// Includes the placeholders of templates that were not checked: of the other role, and not in force.
std::set<std::string> UsedAnywhere(Deployment& product, const std::set<std::string>& used) {
    std::set<std::string> all = used;
    const auto take = [&](const std::vector<std::string>& placeholders) {
        all.insert(placeholders.begin(), placeholders.end());
    };
    const auto takeLines = [&](std::string_view lines) {
        while (!lines.empty())
            take(Text::PlaceholdersOf(Text::TakeLine(lines).text));
    };
    for (const Target& target : product.Lists().Targets().targets) {
        const std::string file = TemplateFile(product, target.templateName);
        try {
            if (!file.empty() && product.HostPaths().StaysInside(file)) ReadChunks(file, takeLines);
        } catch (const Failure&) {
            // Whoever wants to render it gets the reason.
        }
    }
    for (const ListedEdit& edit : product.Lists().Targets().edits)
        take(Text::PlaceholdersOfValue(edit.value + edit.text));
    for (const auto& [placeholder, value] : product.Values().Own())
        take(Text::PlaceholdersOfValue(value));
    const std::set<std::string>& clashing = product.Values().Clashing();
    all.insert(clashing.begin(), clashing.end());
    return all;
}

void FindUnusedTexts(Deployment& product, std::set<std::string> used, UnusedParameters& found) {
    for (const std::string& name : ParametersAskedFor(product))
        used.insert(PlaceholderFor(name));
    for (const auto& [placeholder, file] : product.Values().ValueFiles()) {
        if (!used.contains(placeholder))
            found.unused.push_back({.file = file,
                                    .text = Words("nothing uses %s", placeholder),
                                    .remedy = _("correct its name, or remove the file")});
    }
}

/// The name that is likely meant; empty if there is none.
std::string MeantName(const std::string& name, const std::vector<std::string>& names) {
    const std::string likely = NameOfPlaceholder(PlaceholderFor(name));
    if (std::find(names.begin(), names.end(), likely) != names.end()) return likely;
    return LikelyName(likely, names);
}

/// The names that the template asks for and that a warning may mention: of a private template, only those
/// that everybody knows.
std::vector<std::string> NamesToTell(Deployment& product, const Rendering& rendering,
                                     const std::set<std::string>& used) {
    const bool isPrivate = product.HostSecrets().IsPrivate(TemplateFile(product, rendering.templateName));
    std::vector<std::string> names;
    for (const std::string& placeholder : used)
        if (!isPrivate || product.TemplateValues().contains(placeholder))
            names.push_back(NameOfPlaceholder(placeholder));
    return names;
}

UnusedParameters FindUnusedBeside(Deployment& product, const std::set<std::string>& used) {
    HostValues& values = product.Values();
    std::vector<GivenParameter> given = values.GivenByFleet();
    given.insert(given.end(), values.GivenByMain().begin(), values.GivenByMain().end());
    return FindUnusedParameters(product.Param("ZET_CFG"), given, used, ParametersAskedFor(product));
}

}  // namespace

UnusedParameters FindUnknownNames(Deployment& product, const std::set<std::string>& used) {
    const std::set<std::string> usedAnywhere = UsedAnywhere(product, used);
    UnusedParameters found = FindUnusedBeside(product, usedAnywhere);
    FindUnusedTexts(product, usedAnywhere, found);
    ConditionFindings ofConditions = CheckConditions(product);
    Append(found.mistyped, std::move(ofConditions.problems));
    Append(found.unused, std::move(ofConditions.notGiven));
    Append(found.unused, std::move(ofConditions.warnings));
    return found;
}

std::vector<Problem> FindMistypedNames(Deployment& product, const std::set<std::string>& used) {
    if (FindUnusedBeside(product, used).mistyped.empty()) return {};
    return FindUnusedBeside(product, UsedAnywhere(product, used)).mistyped;
}

UnusedParameters JudgeName(Deployment& product, const std::string& name) {
    GivenParameter given;
    given.name = name;
    if (IsKnownParameter(name)) return {};
    try {
        return FindUnusedParameters("", {given}, UsedAnywhere(product, {}), ParametersAskedFor(product));
    } catch (const Failure&) {
        return {};
    }
}

void WarnOfUnusedValues(Deployment& product, const Rendering& rendering, const std::set<std::string>& used) {
    for (const auto& [placeholder, value] : rendering.values) {
        if (used.contains(placeholder)) continue;
        const std::string meant =
            MeantName(NameOfPlaceholder(placeholder), NamesToTell(product, rendering, used));
        const Problem unused = {
            .file = "--value",
            .text = Words("[%s] does not use %s", rendering.templateName, placeholder),
            .remedy = meant.empty() ? _("correct its name") : Words("did you mean %s?", meant)};
        product.Out().Warning(unused.Describe());
    }
}

}  // namespace ZET::Deploy
