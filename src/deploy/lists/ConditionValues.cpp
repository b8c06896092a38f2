#include "deploy/lists/ConditionValues.h"

#include "deploy/state/ParameterNames.h"
#include "text/Placeholders.h"

namespace ZET::Deploy {

std::optional<ConditionValue> ConditionValues::Find(const std::string& name) const {
    const std::string* const given = FindGiven(name);
    if (given == nullptr) return std::nullopt;
    if (given->find(Text::kPlaceholderBegin) == std::string::npos) return ConditionValue{*given};
    const std::optional<std::string> expanded = m_host.Expanded(*given);
    return ConditionValue{expanded.value_or(*given), expanded.has_value()};
}

/// A file of values wins over the line that gives the parameter, unless no template gets its value.
const std::string* ConditionValues::FindGiven(const std::string& name) const {
    HostValues& values = m_host.Values();
    const std::string placeholder = PlaceholderFor(name);
    const auto own = values.Own().find(placeholder);
    if (values.ValueFiles().contains(placeholder) && own != values.Own().end()) return &own->second;
    const auto given = m_params.find(name);
    return given == m_params.end() ? nullptr : &given->second;
}

}  // namespace ZET::Deploy
