#ifndef ZET_CORE_PARAMETERS_H
#define ZET_CORE_PARAMETERS_H

#include <string>

#include "zet/ZETTypes.h"

namespace ZET::Core {

/// The named parameters: values from the file, later updates, and defaults for the rest, some of which are
/// derived from other parameters.
class Parameters {
  public:
    /// Has only defaults; "ZET_CFG" is empty.
    Parameters();

    /// Reads `file`, which becomes "ZET_CFG"; throws as `ReadParameterFile`. Warns of an invalid flag.
    explicit Parameters(const std::string& file);

    const std::string& Domain() const;
    const std::string& Server() const;
    bool ServiceDiscovery() const;
    bool Sync() const;

    /// The value. An unknown key gives an empty value, with one warning per key and process.
    std::string Get(const std::string& key) const;

    /// Throws `EZETCheckError` for an invalid name, a value that no line can hold, and a different path for
    /// "ZET_CFG". Warns of an invalid flag, which counts as the default.
    void Update(const std::string& key, const std::string& value);

    /// Every parameter with its value.
    StringMap All() const;

    /// The parameters that the product knows, without those that only this host has.
    StringMap OfTheProduct() const;

  private:
    const std::string* Find(const std::string& key) const;
    bool Flag(const std::string& key) const;

    StringMap m_values;
};

}  // namespace ZET::Core

#endif
