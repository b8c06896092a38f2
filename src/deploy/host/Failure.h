#ifndef ZET_FAILURE_H
#define ZET_FAILURE_H

#include <optional>
#include <string>
#include <vector>

#include "zet/ZETProblem.h"
#include "zet/deploy/Failure.h"  // IWYU pragma: export

namespace ZET::Deploy {

/// The failure as one of the problems of `file`. If it is about another file, its text names that one.
Problem ProblemOf(const std::string& file, const Failure& failure);

void Append(std::vector<Problem>& problems, std::vector<Problem> more);
void Append(std::vector<Problem>& problems, std::optional<Problem> problem);

/// Each problem on a line of its own, for the `output` of another problem.
std::string LinesOf(const std::vector<Problem>& problems);

/// The first problem, with the others on the lines below it. There must be at least one.
Problem WithOthersBelow(const std::vector<Problem>& problems);

}  // namespace ZET::Deploy

#endif
