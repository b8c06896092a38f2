#ifndef ZET_OWN_DIRECTORIES_H
#define ZET_OWN_DIRECTORIES_H

#include <set>
#include <string>
#include <string_view>

namespace ZET::Deploy {

/// Why such a parameter cannot be changed: in another directory nothing would be known of what was committed.
std::string CannotMove(const std::string& name);

/// The parameters of the product's own directories to which two texts of the main file give different values.
std::set<std::string> DirectoriesThatDiffer(std::string_view one, std::string_view other);

}  // namespace ZET::Deploy

#endif
