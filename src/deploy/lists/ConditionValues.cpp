#include "deploy/lists/ConditionValues.h"

#include "deploy/state/ParameterNames.h"

namespace ZET::Deploy {

/// A file of values wins over the line that gives the parameter, unless no template gets its value.
const std::string* ConditionValues::Find(const std::string& name) const {
    HostValues& values = m_host.Values();
    const std::string placeholder = PlaceholderFor(name);
    const auto own = values.Own().find(placeholder);
    if (values.ValueFiles().contains(placeholder) && own != values.Own().end()) return &own->second;
    const auto given = m_params.find(name);
    return given == m_params.end() ? nullptr : &given->second;
}

}  // namespace ZET::Deploy
