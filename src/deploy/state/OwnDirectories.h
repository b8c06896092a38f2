#ifndef ZET_OWN_DIRECTORIES_H
#define ZET_OWN_DIRECTORIES_H

#include <set>
#include <string>
#include <string_view>

namespace ZET::Deploy {

/// Why such a parameter stays; in another directory nothing would be known of what was committed.
std::string CannotMove(const std::string& name);

/// The parameters of the product's own directories that two texts of the main file give otherwise.
std::set<std::string> DirectoriesThatDiffer(std::string_view one, std::string_view other);

}  // namespace ZET::Deploy

#endif
