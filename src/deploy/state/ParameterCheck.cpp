#include "deploy/state/ParameterCheck.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <utility>

#include "deploy/host/FileBytes.h"
#include "deploy/host/Words.h"
#include "deploy/state/ConfFile.h"
#include "text/LineExpansion.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {

namespace {

constexpr std::string_view kBlanks = " \t\v\f\r";
constexpr std::size_t kMostMistypedLetters = 2;
constexpr char kDomain[] = "DOMAIN";
constexpr char kServer[] = "SERVER";

/// What a placeholder gets its value from.
struct Source {
    const char* placeholder;
    const char* parameter;
};

constexpr Source kSources[] = {
    {"${domain}", kDomain},
    {"${realm}", "REALM"},
    {"${ldap_domain}", "DOMAIN_DN"},
    {"${ldap_dc}", "DOMAIN_DN"},
    {"${server}", kServer},
    {"${kdc_server}", kServer},
    {"${kadmin_server}", kServer},
    {"${ldap_uris}", kServer},
    {"${max_renewable_life}", "TICKET_MAX_RENEWABLE_LIFE"},
    {"${max_life}", "TICKET_MAX_LIFE"},
    {"${server_id}", "SERVER_ID"},
    {"${minimum_uid}", "MINIMUM_UID"},
    {"${server_export_dir}", "SERVER_EXPORT_DIR"},
    {"${valid_user_names}", "VALID_USER_NAMES"},
    {"${valid_group_names}", "VALID_GROUP_NAMES"},
};

bool HasValue(const StringMap& values, const std::string& placeholder) {
    const auto found = values.find(placeholder);
    return found != values.end() && !found->second.empty() && found->second != "ldap://";
}

/// The value as a template makes it; one that no template can make is none.
std::optional<std::string> Expanded(const std::string& value, const StringMap& values) {
    constexpr std::string_view kGuard = "=";  // a line that begins like a comment is left as it is
    std::size_t longestKey = 0;
    for (const auto& [placeholder, text] : values)
        longestKey = std::max(longestKey, placeholder.size());
    Text::LineExpansion line(std::string(kGuard) + value, values, longestKey, nullptr);
    line.Keep(Text::LineExpansion::kLongestLine);
    if (line.Next() != Text::LineExpansion::Verdict::Fine) return std::nullopt;
    return line.Expanded().substr(kGuard.size());
}

class ValueCheck {
  public:
    ValueCheck(IZETCore& core, const std::vector<GivenParameter>& defaults,
               const std::vector<GivenParameter>& assumed)
        : m_core(core), m_file(core.GetParam("ZET_CFG")), m_given(defaults) {
        for (GivenParameter& parameter : ReadConfText("", ReadFileBytes(m_file)).given)
            m_given.push_back(std::move(parameter));
        m_given.insert(m_given.end(), assumed.begin(), assumed.end());
    }

    void CheckUsed(const StringMap& values, const std::set<std::string>& used) {
        for (const Source& source : kSources) {
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
            if (parameter.value.ends_with('\r')) {
                Add(&parameter, Words("the value of %s ends with a carriage return", parameter.name),
                    _("save the file with plain line feeds"));
            } else if (IsQuotedWithComment(parameter.value)) {
                Add(&parameter,
                    Words("the value of %s is in quotes with a comment behind, and has both as parts of it",
                          parameter.name),
                    _("write the bare value alone behind \"=\""));
            } else if (const auto problem = ProblemOf(parameter, values)) {
                Add(&parameter, problem->text, problem->remedy);
            }
        }
    }

    std::vector<Problem> Result() { return std::move(m_problems); }

  private:
    /// A value with placeholders is what a template makes of it.
    static std::optional<ZETParameterProblem> ProblemOf(const GivenParameter& parameter,
                                                        const StringMap& values) {
        if (auto problem = ProblemOfParam(parameter.name, parameter.value)) return problem;
        if (!IsOfTheProduct(parameter.name) || parameter.value.find("${") == std::string::npos)
            return std::nullopt;
        const std::optional<std::string> made = Expanded(parameter.value, values);
        return made ? ProblemOfParam(parameter.name, *made) : std::nullopt;
    }

    void TellNoValue(const Source& source) {
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

/// How many letters have to be put in, taken out or exchanged to make one name of the other.
std::size_t DistanceOf(std::string_view one, std::string_view other) {
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < one.size(); ++i) {
        std::size_t before = row[0]++;
        for (std::size_t j = 0; j < other.size(); ++j) {
            const std::size_t exchanged = before + (one[i] == other[j] ? 0 : 1);
            before = row[j + 1];
            row[j + 1] = std::min({exchanged, before + 1, row[j] + 1});
        }
    }
    return row.back();
}

}  // namespace

const GivenParameter* FindGiven(const std::vector<GivenParameter>& given, const std::string& name) {
    const auto last = std::find_if(given.rbegin(), given.rend(),
                                   [&](const GivenParameter& parameter) { return parameter.name == name; });
    return last == given.rend() ? nullptr : &*last;
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

bool IsParameterName(std::string_view name) {
    constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_";
    return !name.empty() && kLetters.find(name.front()) != std::string_view::npos &&
           name.find_first_not_of(std::string(kLetters) + "0123456789") == std::string_view::npos;
}

bool IsOfTheProduct(const std::string& name) {
    return IsKnownParameter(name);
}

std::vector<std::string> NamesOfTheProduct() {
    std::vector<std::string> names;
    for (const ZETParameter& parameter : KnownParameters())
        names.push_back(parameter.name);
    return names;
}

bool HaveSameMeaning(const std::string& name, const std::string& one, const std::string& other) {
    const std::optional<bool> flag = FlagOfParam(name, one);
    return flag ? flag == FlagOfParam(name, other) : one == other;
}

std::string PlaceholderFor(const std::string& name) {
    std::string placeholder = "${";
    for (const char c : name)
        placeholder += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return placeholder + "}";
}

std::string ParameterBehind(const std::string& placeholder) {
    for (const Source& source : kSources)
        if (placeholder == source.placeholder) return source.parameter;
    return "";
}

std::string ParameterThatMakes(const std::string& name) {
    const std::optional<ZETParameter> known = KnownParameter(name);
    return known ? known->source : "";
}

std::string NearestName(const std::string& name, const std::vector<std::string>& names) {
    std::string nearest;
    std::size_t least = kMostMistypedLetters + 1;
    for (const std::string& candidate : names) {
        const std::size_t lengths =
            std::max(name.size(), candidate.size()) - std::min(name.size(), candidate.size());
        if (lengths >= least) continue;
        const std::size_t distance = DistanceOf(name, candidate);
        if (distance >= least) continue;
        least = distance;
        nearest = candidate;
    }
    return nearest;
}

bool IsQuotedWithComment(std::string_view value) {
    if (!value.starts_with('"') && !value.starts_with('\'')) return false;
    const std::size_t end = value.find(value.front(), 1);
    if (end == std::string_view::npos) return false;
    const std::size_t behind = value.find_first_not_of(kBlanks, end + 1);
    return behind != std::string_view::npos && behind > end + 1 && value[behind] == '#';
}

}  // namespace ZET::Deploy
