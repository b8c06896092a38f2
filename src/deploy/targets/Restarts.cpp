#include "deploy/targets/Restarts.h"

#include <algorithm>

#include "deploy/host/TextStreams.h"

namespace ZET {

void Restarts::Add(const std::string& services) {
    TextReader words(services);
    for (std::string service; words >> service;) {
        if (std::find(m_services.begin(), m_services.end(), service) == m_services.end())
            m_services.push_back(service);
    }
}

void Restarts::Tell(Session& session) const {
    std::string names;
    for (const std::string& service : m_services) {
        session.Out().Add("restart", service);
        names += (names.empty() ? "" : ", ") + service;
    }
    if (names.empty() || session.Asked().quiet) return;
    session.Out().Line((session.Asked().dryRun ? "would have to be restarted: " : "to be restarted: ") +
                       names);
}

}  // namespace ZET
