#ifndef ZET_RESTARTS_H
#define ZET_RESTARTS_H

#include <set>
#include <string>
#include <vector>

#include "deploy/targets/Deployment.h"

namespace ZET::Deploy {

/// The services that do not notice the change of their files by themselves: they are restarted, or told to
/// read them again.
class Restarts {
  public:
    /// Each counts once.
    void Add(const Services& services);
    void Add(const Target& target, Role role) { Add(target.ServicesFor(role)); }

    const std::vector<std::string>& ToRestart() const { return m_services; }

    /// Of those that are not restarted.
    std::vector<std::string> ToReload() const;

    void Tell(Observer& out) const;

  private:
    std::vector<std::string> m_reloads;
    std::vector<std::string> m_services;
    std::set<std::string> m_known;
};

}  // namespace ZET::Deploy

#endif
