#ifndef ZET_RESTARTS_H
#define ZET_RESTARTS_H

#include <string>
#include <vector>

#include "deploy/state/Session.h"

namespace ZET {

/// The services that do not notice the change of their files before they are restarted.
class Restarts {
  public:
    /// `services` as the list of targets has them, blanks between; each counts once.
    void Add(const std::string& services);

    /// The list "restart" of the document, which is there already, and a line.
    void Tell(Session& session) const;

  private:
    std::vector<std::string> m_services;
};

}  // namespace ZET

#endif
