#ifndef ZET_CORE_PARAMETERS_H
#define ZET_CORE_PARAMETERS_H

#include <string>

#include "zet/ZETTypes.h"

namespace ZET::Core {

/// The named parameters: what the file says, what was updated since, and defaults for the rest, which follow
/// the parameters that they are derived from.
class Parameters {
  public:
    /// Defaults alone; "ZET_CFG" is empty.
    Parameters();

    /// Reads `file`, the parameter "ZET_CFG"; throws as `ReadParameterFile`. Warns of a flag that is none.
    explicit Parameters(const std::string& file);

    const std::string& Domain() const;
    const std::string& Server() const;
    bool ServiceDiscovery() const;
    bool Sync() const;

    /// The value; empty, with one warning for each key in the process's life, when the key is unknown.
    std::string Get(const std::string& key) const;

    /// Throws `EZETCheckError` for a key that is no name, a value that no line can hold, and another path for
    /// "ZET_CFG". Warns of a flag that is none, which counts as the default.
    void Update(const std::string& key, const std::string& value);

    /// Every parameter with its value.
    StringMap All() const;

    /// Those that the product itself knows: none that a host has of its own.
    StringMap OfTheProduct() const;

  private:
    const std::string* Find(const std::string& key) const;
    bool Flag(const std::string& key) const;

    StringMap m_values;
};

}  // namespace ZET::Core

#endif
