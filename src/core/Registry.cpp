#include "Registry.h"

#include <algorithm>
#include <utility>

#include "Message.h"

namespace ZET::Core {

bool Registry::Register(std::shared_ptr<CZETInterface> interface) {
    RequireNotEmpty(interface != nullptr ? interface->GetName() : std::string(), "RegisterInterface");
    const std::string name = interface->GetName();
    const bool isNew = m_interfaces.try_emplace(name, std::move(interface)).second;
    if (!isNew) m_refusedName = name;
    return isNew;
}

std::string Registry::TakeRefusedName() {
    return std::exchange(m_refusedName, {});
}

bool Registry::Remove(const std::string& name) {
    if (m_kept != nullptr && std::binary_search(m_kept->begin(), m_kept->end(), name)) return false;
    // The interface may be destroyed here; its destructor must find the registry without it.
    return !m_interfaces.extract(name).empty();
}

void Registry::RemoveAllBut(const std::vector<std::string>& names) noexcept {
    for (auto each = m_interfaces.begin(); each != m_interfaces.end();) {
        const auto present = each++;
        if (!std::binary_search(names.begin(), names.end(), present->first)) m_interfaces.extract(present);
    }
}

std::shared_ptr<CZETInterface> Registry::Find(const std::string& name) const {
    const auto found = m_interfaces.find(name);
    return found != m_interfaces.end() ? found->second : nullptr;
}

std::vector<std::string> Registry::Names() const {
    std::vector<std::string> names;
    for (const auto& [name, interface] : m_interfaces)
        names.push_back(name);
    return names;
}

}  // namespace ZET::Core
