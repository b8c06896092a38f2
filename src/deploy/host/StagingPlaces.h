#ifndef ZET_STAGING_PLACES_H
#define ZET_STAGING_PLACES_H

#include <cstdint>
#include <string>
#include <vector>

namespace ZET::Deploy {

/// The directories in which to try to make a staging directory, the best one first. `size` and `lastResort`
/// are those of `Staging`.
std::vector<std::string> PlacesForStaging(const std::string& lastResort, std::uintmax_t size);

/// The directories in which runs of this user may have made one, also under other circumstances.
std::vector<std::string> PlacesOfStaging(const std::string& lastResort);

/// The directory's canonical name if nobody else can replace it, or a part of the way to it; else empty.
std::string SafePlace(const std::string& directory);

}  // namespace ZET::Deploy

#endif
