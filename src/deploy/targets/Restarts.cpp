#include "deploy/targets/Restarts.h"

namespace ZET::Deploy {

void Restarts::Add(const Services& services) {
    for (const std::string& service : services.restart) {
        if (m_known.insert(service).second) m_services.push_back(service);
    }
    m_reloads.insert(m_reloads.end(), services.reload.begin(), services.reload.end());
}

std::vector<std::string> Restarts::ToReload() const {
    std::set<std::string> known = m_known;
    std::vector<std::string> services;
    for (const std::string& service : m_reloads)
        if (known.insert(service).second) services.push_back(service);
    return services;
}

void Restarts::Tell(Observer& out) const {
    out.Restarts(m_services);
    out.Reloads(ToReload());
}

}  // namespace ZET::Deploy
