#ifndef ZET_FAILURE_H
#define ZET_FAILURE_H

#include <optional>
#include <string>
#include <vector>

#include "zet/ZETProblem.h"
#include "zet/deploy/Failure.h"  // IWYU pragma: export

namespace ZET::Deploy {

/// A failure, told as one problem of the file among others; the text then names another file that it is
/// about.
Problem ProblemOf(const std::string& file, const Failure& failure);

void Append(std::vector<Problem>& problems, std::vector<Problem> more);
void Append(std::vector<Problem>& problems, std::optional<Problem> problem);

/// Each in a line of its own, for the `output` of another one.
std::string LinesOf(const std::vector<Problem>& problems);

/// The first, with the others in the lines below it.
Problem WithOthersBelow(const std::vector<Problem>& problems);

}  // namespace ZET::Deploy

#endif
