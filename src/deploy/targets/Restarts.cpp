#include "deploy/targets/Restarts.h"

namespace ZET::Deploy {

void Restarts::Add(const std::vector<std::string>& services) {
    for (const std::string& service : services) {
        if (m_known.insert(service).second) m_services.push_back(service);
    }
}

}  // namespace ZET::Deploy
