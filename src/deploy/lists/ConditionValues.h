#ifndef ZET_CONDITION_VALUES_H
#define ZET_CONDITION_VALUES_H

#include <optional>
#include <string>

#include "deploy/state/Host.h"

namespace ZET::Deploy {

/// What `when` asks for: the value of a parameter, as templates get it.
struct ConditionValue {
    std::string text;
    bool isComplete = true;  ///< false: a placeholder in it cannot be replaced, so it stands as it is given
};

/// The values of the parameters that `when` asks for.
class ConditionValues {
  public:
    explicit ConditionValues(Host& host) : m_host(host), m_params(host.Values().Params()) {}

    /// None if nobody gives the parameter.
    std::optional<ConditionValue> Find(const std::string& name) const;

  private:
    const std::string* FindGiven(const std::string& name) const;

    Host& m_host;
    const StringMap m_params;
};

}  // namespace ZET::Deploy

#endif
