#ifndef ZET_RESTARTS_H
#define ZET_RESTARTS_H

#include <set>
#include <string>
#include <vector>

#include "deploy/targets/Deployment.h"

namespace ZET::Deploy {

/// The services that do not notice the change of their files before they are restarted.
class Restarts {
  public:
    /// Each counts once.
    void Add(const std::vector<std::string>& services);

    const std::vector<std::string>& Services() const { return m_services; }

  private:
    std::vector<std::string> m_services;
    std::set<std::string> m_known;
};

}  // namespace ZET::Deploy

#endif
