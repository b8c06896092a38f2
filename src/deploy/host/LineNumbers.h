#ifndef ZET_LINE_NUMBERS_H
#define ZET_LINE_NUMBERS_H

#include <cstddef>
#include <string>
#include <vector>

namespace ZET::Deploy {

/// "3", "3 and 9", "3, 9 and 12", "3, 9, ... and 90 more".
std::string LineNumbers(const std::vector<std::size_t>& numbers);

}  // namespace ZET::Deploy

#endif
