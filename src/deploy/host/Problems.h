#ifndef ZET_PROBLEMS_H
#define ZET_PROBLEMS_H

#include <string>
#include <vector>

#include "zet/ZETProblem.h"

namespace ZET::Deploy {

void Append(std::vector<Problem>& problems, std::vector<Problem> more);

/// Each in a line of its own, for the `output` of another one.
std::string LinesOf(const std::vector<Problem>& problems);

/// The first, with the others in the lines below it.
Problem WithOthersBelow(const std::vector<Problem>& problems);

}  // namespace ZET::Deploy

#endif
