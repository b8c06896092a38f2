#include "deploy/state/ParameterCheck.h"

#include <algorithm>
#include <utility>

#include "deploy/host/Words.h"
#include "deploy/state/HostValues.h"
#include "deploy/state/ParameterNames.h"
#include "text/LineExpansion.h"
#include "text/Lines.h"
#include "text/Placeholders.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {

namespace {

constexpr char kDomain[] = "DOMAIN";
constexpr char kServer[] = "SERVER";

bool HasValue(const StringMap& values, const std::string& placeholder) {
    const auto found = values.find(placeholder);
    return found != values.end() && !found->second.empty() && found->second != "ldap://";
}

bool EndsWithReturn(const std::string& value) {
    return value.ends_with('\r');
}

std::optional<Problem> ProblemOfKind(const std::string& name, const std::string& value) {
    const std::optional<ZETParameterProblem> problem = ProblemOfParam(name, value);
    if (!problem) return std::nullopt;
    return Problem{.text = problem->text, .remedy = problem->remedy};
}

class ValueCheck {
  public:
    ValueCheck(IZETCore& core, const std::vector<GivenParameter>& defaults,
               const std::vector<GivenParameter>& assumed)
        : m_core(core), m_file(core.GetParam("ZET_CFG")), m_given(defaults) {
        for (GivenParameter& parameter : GivenIn(m_file))
            m_given.push_back(std::move(parameter));
        m_given.insert(m_given.end(), assumed.begin(), assumed.end());
    }

    void CheckUsed(const StringMap& values, const std::set<std::string>& used) {
        for (const OwnPlaceholder& source : kOwnPlaceholders) {
            if (used.contains(source.placeholder) && !HasValue(values, source.placeholder))
                TellNoValue(source);
        }
    }

    void CheckGiven(const StringMap& values) {
        for (const GivenParameter& parameter : m_given) {
            // Another line, or the caller, may have had the last word.
            if (FindGiven(m_given, parameter.name) != &parameter ||
                m_core.GetParam(parameter.name) != parameter.value)
                continue;
            const std::optional<Problem> problem = ProblemOf(parameter, values);
            if (!problem) continue;
            Add(&parameter, problem->text,
                EndsWithReturn(parameter.value) ? _("save the file with plain line feeds") : problem->remedy);
        }
    }

    std::vector<Problem> Result() { return std::move(m_problems); }

  private:
    /// A value with placeholders is checked as a template expands it.
    static std::optional<Problem> ProblemOf(const GivenParameter& parameter, const StringMap& values) {
        if (auto problem = ProblemOfValue(parameter.name, parameter.value)) return problem;
        if (!IsKnownParameter(parameter.name) || parameter.value.find("${") == std::string::npos)
            return std::nullopt;
        const std::optional<std::string> made = ExpandedValue(parameter.value, values);
        return made ? ProblemOfKind(parameter.name, *made) : std::nullopt;
    }

    void TellNoValue(const OwnPlaceholder& source) {
        std::string name = source.parameter;
        const GivenParameter* given = FindGiven(m_given, name);
        if (given == nullptr && ParameterThatMakes(name) == kDomain && m_core.GetDomainName().empty()) {
            name = kDomain;
            given = FindGiven(m_given, name);
        }
        if (!m_told.insert(name).second) return;
        const bool hasDefault = name != kDomain && name != kServer;
        const bool hasLine = given != nullptr && given->line > 0;
        if (!m_core.GetParam(name).empty()) {
            Add(given, Words("%s has nothing to make %s of", name, source.placeholder),
                _("correct its value"));
        } else if (given == nullptr && !hasDefault) {
            Add(given, Words("%s is not set, so that %s has no value", name, source.placeholder),
                Words("add a line %s=VALUE, or use \"option set\"", name));
        } else {
            Add(given, Words("%s is empty, so that %s has no value", name, source.placeholder),
                hasLine && hasDefault ? _("give it a value, or remove its line") : _("give it a value"));
        }
    }

    void Add(const GivenParameter* given, const std::string& text, const std::string& remedy) {
        const int line = given == nullptr ? 0 : given->line;
        const int column = given == nullptr ? 0 : given->column;
        const std::string& file = given == nullptr || given->file.empty() ? m_file : given->file;
        m_problems.push_back({file, line, column, text, remedy});
    }

    IZETCore& m_core;
    std::string m_file;
    std::vector<GivenParameter> m_given;
    std::set<std::string> m_told;
    std::vector<Problem> m_problems;
};

}  // namespace

std::optional<std::string> ExpandedValue(const std::string& value, const StringMap& values) {
    std::size_t longestKey = 0;
    for (const auto& [placeholder, text] : values)
        longestKey = std::max(longestKey, placeholder.size());
    Text::LineExpansion line(std::string(Text::kLineGuard) + value, values, longestKey, nullptr);
    line.Keep(Text::LineExpansion::kLongestLine);
    if (line.Next() != Text::LineExpansion::Verdict::Fine) return std::nullopt;
    return line.Expanded().substr(Text::kLineGuard.size());
}

std::optional<Problem> ProblemOfValue(const std::string& name, const std::string& value) {
    if (EndsWithReturn(value))
        return Problem{.text = Words("the value of %s ends with a carriage return", name),
                       .remedy = _("give it without")};
    if (IsQuotedWithComment(value))
        return Problem{
            .text = Words("the value of %s is in quotes with a comment behind, and has both as parts of it",
                          name),
            .remedy = _("write the bare value alone behind \"=\"")};
    return ProblemOfKind(name, value);
}

std::vector<Problem> CheckParameterValues(IZETCore& core, const StringMap& values,
                                          const std::set<std::string>& used,
                                          const std::vector<GivenParameter>& defaults,
                                          const std::vector<GivenParameter>& assumed) {
    ValueCheck check(core, defaults, assumed);
    check.CheckGiven(values);
    check.CheckUsed(values, used);
    return check.Result();
}

std::vector<Problem> CheckLineEnds(HostValues& values, const std::set<std::string>& used) {
    std::set<std::string> checked;
    for (const auto* given : {&values.GivenByFleet(), &values.GivenByMain(), &values.Assumed()})
        for (const GivenParameter& parameter : *given)
            checked.insert(PlaceholderFor(parameter.name));
    std::vector<Problem> problems;
    for (const auto& [placeholder, value] : values.Own()) {
        if (!EndsWithReturn(value) || checked.contains(placeholder) || !used.contains(placeholder)) continue;
        const auto source = values.SourceOfPlaceholder(placeholder);
        if (source)
            problems.push_back({.file = source->file,
                                .line = source->line,
                                .text = Words("the value of %s ends with a carriage return", placeholder),
                                .remedy = _("save the file with plain line feeds")});
    }
    return problems;
}

UnusedParameters FindUnusedParameters(const std::string& file, const std::vector<GivenParameter>& given,
                                      const std::set<std::string>& used, const std::set<std::string>& asked) {
    const std::vector<std::string> known = NamesOfTheProduct();
    UnusedParameters found;
    for (const GivenParameter& parameter : given) {
        const std::string placeholder = PlaceholderFor(parameter.name);
        if (std::find(known.begin(), known.end(), parameter.name) != known.end() ||
            used.contains(placeholder) || asked.contains(parameter.name))
            continue;
        const std::string nearest = NearestName(parameter.name, known);
        (nearest.empty() ? found.unused : found.mistyped)
            .push_back(
                {parameter.file.empty() ? file : parameter.file, parameter.line, 0,
                 Words("nobody knows the parameter %s, and nothing uses %s", parameter.name, placeholder),
                 nearest.empty() ? _("correct its name, or remove the line")
                                 : Words("did you mean %s?", nearest)});
    }
    return found;
}

bool IsQuotedWithComment(std::string_view value) {
    if (!value.starts_with('"') && !value.starts_with('\'')) return false;
    const std::size_t end = value.find(value.front(), 1);
    if (end == std::string_view::npos) return false;
    const std::size_t behind = value.find_first_not_of(Text::kBlanks, end + 1);
    return behind != std::string_view::npos && behind > end + 1 && value[behind] == '#';
}

}  // namespace ZET::Deploy
