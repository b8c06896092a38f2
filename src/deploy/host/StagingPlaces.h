#ifndef ZET_STAGING_PLACES_H
#define ZET_STAGING_PLACES_H

#include <cstdint>
#include <string>
#include <vector>

namespace ZET::Deploy {

/// The directories in which one for staged files is tried to be made, the best one first. `size` and
/// `lastResort` are those of `Staging`.
std::vector<std::string> PlacesForStaging(const std::string& lastResort, std::uintmax_t size);

/// The directories in which this user's runs may have made one, under other circumstances too.
std::vector<std::string> PlacesOfStaging(const std::string& lastResort);

/// The directory by its one name, along which nobody else can put anything in the place of what is there;
/// empty where somebody can.
std::string SafePlace(const std::string& directory);

}  // namespace ZET::Deploy

#endif
