#include "deploy/targets/Restarts.h"

#include <algorithm>

#include "deploy/host/TextStreams.h"

namespace ZET::Deploy {

void Restarts::Add(const std::string& services) {
    TextReader words(services);
    for (std::string service; words >> service;) {
        if (std::find(m_services.begin(), m_services.end(), service) == m_services.end())
            m_services.push_back(service);
    }
}

}  // namespace ZET::Deploy
