#include "deploy/targets/UnknownNames.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"
#include "deploy/state/ParameterNames.h"
#include "deploy/targets/ConditionCheck.h"
#include "deploy/targets/TemplateFiles.h"
#include "deploy/targets/UsedPlaceholders.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {

namespace {

void FindUnusedTexts(Deployment& product, const std::set<std::string>& usedAnywhere,
                     UnusedParameters& found) {
    const std::set<std::string> used = UsedOrAskedFor(product, usedAnywhere);
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
        return FindUnusedParameters("", {given}, UsedAnywhere(product), ParametersAskedFor(product));
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
