#ifndef ZET_RESTARTS_H
#define ZET_RESTARTS_H

#include <string>
#include <vector>

#include "deploy/targets/Deployment.h"

namespace ZET::Deploy {

/// The services that do not notice the change of their files before they are restarted.
class Restarts {
  public:
    /// `services` as the list of targets has them, blanks between; each counts once.
    void Add(const std::string& services);

    const std::vector<std::string>& Services() const { return m_services; }

  private:
    std::vector<std::string> m_services;
};

}  // namespace ZET::Deploy

#endif
