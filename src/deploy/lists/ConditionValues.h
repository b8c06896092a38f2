#ifndef ZET_CONDITION_VALUES_H
#define ZET_CONDITION_VALUES_H

#include <string>

#include "deploy/state/Host.h"

namespace ZET::Deploy {

/// The values of the parameters that `when` asks for; templates get the same values.
class ConditionValues {
  public:
    explicit ConditionValues(Host& host) : m_host(host), m_params(host.Values().Params()) {}

    /// Null if nobody gives the parameter.
    const std::string* Find(const std::string& name) const;

  private:
    Host& m_host;
    const StringMap m_params;
};

}  // namespace ZET::Deploy

#endif
