#ifndef ZET_ZETTYPES_H
#define ZET_ZETTYPES_H

#include <map>
#include <string>

namespace ZET {

/// Maps text to text, ordered by plain bytes: template values by placeholder, status entries by key.
using StringMap = std::map<std::string, std::string>;

}  // namespace ZET

#endif
