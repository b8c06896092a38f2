#ifndef ZET_RESTARTS_H
#define ZET_RESTARTS_H

#include <set>
#include <string>
#include <vector>

#include "deploy/targets/Deployment.h"

namespace ZET::Deploy {

/// The services that do not notice by themselves that their files change: they are restarted, or read the
/// files again.
class Restarts {
  public:
    /// Each service counts once.
    void Add(const Services& services);
    void Add(const Target& target, Role role) { Add(target.ServicesFor(role)); }

    const std::vector<std::string>& ToRestart() const { return m_services; }

    /// Leaves out those that are restarted anyway.
    std::vector<std::string> ToReload() const;

    void Tell(Observer& out) const;

  private:
    std::vector<std::string> m_reloads;
    std::vector<std::string> m_services;
    std::set<std::string> m_known;
};

}  // namespace ZET::Deploy

#endif
