#ifndef ZET_CORE_PARAMETER_TABLE_H
#define ZET_CORE_PARAMETER_TABLE_H

#include <span>
#include <string>
#include <string_view>

#include "zet/ZETHost.h"

namespace ZET::Core {

inline constexpr char kConfigFile[] = "ZET_CFG";
inline constexpr char kDomain[] = "DOMAIN";
inline constexpr char kServer[] = "SERVER";
inline constexpr char kServiceDiscovery[] = "SERVICE_DISCOVERY";
inline constexpr char kSync[] = "ZET_SYNC";

struct ParameterEntry {
    const char* name;
    ZETParameterKind kind;
    bool mayBeEmpty;
    bool isForTemplates;  ///< false for parameters that only the product itself uses
    const char* value;    ///< the default
    std::string (*derive)(const std::string& domain);
    const char* text;
    const char* words = "";  ///< to choose from, separated by blanks
};

/// Every parameter that the core knows, ordered by name; defined only here.
std::span<const ParameterEntry> ParameterTable();

/// Null if the core does not know it.
const ParameterEntry* FindParameter(std::string_view name);

/// The default value on a host of that domain.
std::string DefaultValue(const ParameterEntry& entry, const std::string& domain);

/// The entry in the form that the public interface uses.
ZETParameter Described(const ParameterEntry& entry);

}  // namespace ZET::Core

#endif
