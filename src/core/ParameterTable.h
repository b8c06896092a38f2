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
    bool isForTemplates;  ///< what the product itself goes by is none of them
    const char* value;    ///< by default
    std::string (*derive)(const std::string& domain);
    const char* text;
    const char* words = "";  ///< to choose from, divided by blanks
};

/// Every parameter that the core knows, in the order of the names: the only place where they stand.
std::span<const ParameterEntry> ParameterTable();

/// Null: the core does not know it.
const ParameterEntry* FindParameter(std::string_view name);

/// The value in a host of that domain unless it says otherwise.
std::string DefaultValue(const ParameterEntry& entry, const std::string& domain);

/// The same entry for others.
ZETParameter Described(const ParameterEntry& entry);

}  // namespace ZET::Core

#endif
