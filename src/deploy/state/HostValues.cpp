#include "deploy/state/HostValues.h"

#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/state/Host.h"
#include "deploy/state/ParameterNames.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {

void HostValues::TakeDefaults() {
    m_reader.ReadFleet();
    if (m_given.fleet.empty()) return;
    m_reader.ReadMain();
    for (const GivenParameter& given : m_given.fleet) {
        const bool isBroken = IsOwnDirectory(given.name) && ProblemOfParam(given.name, given.value);
        if (IsFixed(given.name) || isBroken || FindGiven(m_given.main, given.name) != nullptr) continue;
        m_host.Core().UpdateParam(given.name, given.value);
    }
}

bool HostValues::IsFixed(const std::string& name) const {
    return LeadsToFleet(name) || m_host.Wanted().directories.contains(name);
}

/// Reads what most commands do not ask for.
void HostValues::ReadRest() {
    if (std::exchange(m_isRead, true)) return;
    m_reader.ReadMain();
    m_reader.ReadShipped();
    m_reader.ReadTexts();
    m_names.Check(m_host.Param(kMainFile));
}

const StringMap& HostValues::Own() {
    if (m_own) return *m_own;
    ReadRest();
    StringMap own;
    for (const GivenParameter& given : m_names.Shipped())
        own[PlaceholderFor(given.name)] = given.value;
    for (const auto& [name, value] : m_host.CoreParams())
        if (!IsKnownParameter(name)) own[PlaceholderFor(name)] = value;
    for (const auto& [placeholder, text] : m_given.texts)
        own[placeholder] = text;
    std::erase_if(own, [&](const auto& value) {
        const bool isUnread = m_given.textFiles.contains(value.first) && !m_given.texts.contains(value.first);
        return isUnread || m_names.Clashing().contains(value.first);
    });
    m_own = std::move(own);
    return *m_own;
}

StringMap HostValues::Params() {
    ReadRest();
    StringMap params = m_host.CoreParams();
    StringMap shipped;
    for (const GivenParameter& given : m_names.Shipped())
        shipped[given.name] = given.value;
    params.merge(shipped);
    return params;
}

std::optional<HostValues::Source> HostValues::SourceOfParam(const std::string& name) {
    ReadRest();
    if (const GivenParameter* const given = FindGiven(m_given.main, name))
        return Source{m_host.Param(kMainFile), given->line};
    if (const auto below = GivenBelowMain(name)) return Source{below->file, below->line};
    const std::string maker = ParameterThatMakes(name);
    return maker.empty() ? std::nullopt : SourceOfParam(maker);
}

std::optional<GivenParameter> HostValues::GivenBelowMain(const std::string& name) {
    ReadRest();
    for (const auto* source : {&m_given.fleet, &m_names.Shipped()})
        if (const GivenParameter* const given = FindGiven(*source, name)) return *given;
    return std::nullopt;
}

std::optional<HostValues::Source> HostValues::SourceOfPlaceholder(const std::string& placeholder) {
    ReadRest();
    if (const std::string own = ParameterBehind(placeholder); !own.empty()) return SourceOfParam(own);
    if (const auto text = m_given.textFiles.find(placeholder); text != m_given.textFiles.end())
        return Source{text->second, 0};
    const std::string name = m_names.ParameterOf(placeholder);
    return name.empty() ? std::nullopt : SourceOfParam(name);
}

std::optional<Problem> HostValues::ProblemOfName(const std::string& name) {
    ReadRest();
    return m_names.ProblemOf(name);
}

std::vector<Problem> HostValues::Problems() {
    ReadRest();
    std::vector<Problem> problems = m_given.problems;
    Append(problems, m_names.Problems());
    return problems;
}

const HostValues::Unread& HostValues::UnreadSources() {
    ReadRest();
    return m_given.unread;
}

const std::vector<GivenParameter>& HostValues::GivenByMain() {
    ReadRest();
    return m_given.main;
}

const std::set<std::string>& HostValues::Clashing() {
    ReadRest();
    return m_names.Clashing();
}

const std::map<std::string, std::string>& HostValues::ValueFiles() {
    ReadRest();
    return m_given.textFiles;
}

std::vector<std::string> HostValues::Files() {
    ReadRest();
    return m_given.files;
}

}  // namespace ZET::Deploy
