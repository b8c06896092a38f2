#include "deploy/state/ValueNames.h"

#include <string_view>

#include "deploy/host/Words.h"
#include "deploy/state/Host.h"
#include "deploy/state/ParameterNames.h"

namespace ZET::Deploy {

namespace {

constexpr std::string_view kOwnPrefix = "ZET_";

/// The product's parameter that has this name in capital letters; empty if there is none.
std::string ParameterSpelled(const std::string& name) {
    std::string upper = name;
    for (char& c : upper)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return IsKnownParameter(upper) ? upper : "";
}

}  // namespace

void ValueNames::Check(const std::string& mainFile) {
    m_mainFile = mainFile;
    CheckFleet();
    CheckShipped();
    for (const GivenParameter& given : m_given.main)
        CheckName(given, false);
    for (const auto& [placeholder, file] : m_given.textFiles)
        CheckText(NameOfPlaceholder(placeholder), file);
}

void ValueNames::CheckFleet() {
    for (const GivenParameter& given : m_given.fleet) {
        if (LeadsToFleet(given.name)) {
            AddOf(given, Words("%s has no effect here", given.name),
                  _("set it in the main configuration file"));
        } else if (const auto problem = ProblemOfParam(given.name, given.value);
                   problem && IsOwnDirectory(given.name)) {
            AddOf(given, problem->text, problem->remedy);
        } else {
            CheckName(given, false);
        }
    }
}

void ValueNames::CheckShipped() {
    for (const GivenParameter& given : m_given.shipped) {
        if (IsKnownParameter(given.name)) {
            AddOf(given, Words("%s is a parameter of the product, which has a default", given.name),
                  _("remove the line; defaults of your own belong into defaults.d"));
        } else if (CheckName(given, true)) {
            m_shipped.push_back(given);
        }
    }
}

/// What keeps a name from being a placeholder of the host's own, without its place.
std::optional<Problem> ValueNames::ClashOf(const std::string& name) const {
    const auto clash = [](const std::string& text, const std::string& remedy) {
        return Problem{.text = text, .remedy = remedy};
    };
    const std::string placeholder = PlaceholderFor(name);
    if (name.starts_with(kOwnPrefix)) {
        const std::string nearest = NearestName(name, NamesOfTheProduct());
        return clash(Words("the product has no parameter %s", name),
                     nearest.empty() ? _("names of your own must not begin with ZET_")
                                     : Words("did you mean %s?", nearest));
    }
    if (const std::string own = ParameterBehind(placeholder); !own.empty())
        return clash(Words("%s would be %s, which the product makes of %s", name, placeholder, own),
                     Words("set %s, or give it another name", own));
    if (const std::string own = ParameterSpelled(name); !own.empty())
        return clash(Words("the product has the parameter %s", own),
                     _("write it in capital letters, or use another name"));
    const auto known = m_spelled.find(placeholder);
    if (known != m_spelled.end() && known->second != name)
        return clash(Words("%s and %s are both %s", name, known->second, placeholder),
                     _("use one spelling of the name"));
    return std::nullopt;
}

/// Objects if a value of several lines has this name, too.
std::optional<Problem> ValueNames::ClashWithText(const std::string& name) const {
    const auto text = m_given.textFiles.find(PlaceholderFor(name));
    if (text == m_given.textFiles.end()) return std::nullopt;
    return Problem{.text = Words("%s is the file %s, too", name, text->second),
                   .remedy = _("keep one of the two")};
}

/// Whether the name can be a placeholder of the host's own. If not, adds the problem.
bool ValueNames::CheckName(const GivenParameter& given, bool isShipped) {
    if (IsKnownParameter(given.name)) return true;
    const std::string placeholder = PlaceholderFor(given.name);
    std::optional<Problem> clash = ClashOf(given.name);
    if (clash) {
        m_clashing.insert(placeholder);
    } else {
        m_spelled.emplace(placeholder, given.name);
        if (!isShipped) clash = ClashWithText(given.name);
    }
    if (clash) AddOf(given, clash->text, clash->remedy);
    return !clash;
}

std::optional<Problem> ValueNames::ProblemOf(const std::string& name) const {
    if (IsKnownParameter(name)) return std::nullopt;
    const std::optional<Problem> clash = ClashOf(name);
    return clash ? clash : ClashWithText(name);
}

void ValueNames::CheckText(const std::string& name, const std::string& file) {
    const std::string placeholder = PlaceholderFor(name);
    const std::string own = ParameterBehind(placeholder);
    const std::string spelled = ParameterSpelled(name);
    if (own.empty() && spelled.empty() && !name.starts_with("zet_")) return;
    m_clashing.insert(placeholder);
    const std::string text = !own.empty()
                                 ? Words("%s is made of the product's parameter %s", placeholder, own)
                             : !spelled.empty() ? Words("the product has the parameter %s", spelled)
                                                : _("names that begin with zet_ are the product's");
    m_problems.push_back({.file = file, .text = text, .remedy = _("give the value another name")});
}

void ValueNames::AddOf(const GivenParameter& given, const std::string& text, const std::string& remedy) {
    m_problems.push_back({given.file.empty() ? m_mainFile : given.file, given.line, 0, text, remedy});
}

std::string ValueNames::ParameterOf(const std::string& placeholder) const {
    const auto spelled = m_spelled.find(placeholder);
    return spelled == m_spelled.end() ? "" : spelled->second;
}

}  // namespace ZET::Deploy
