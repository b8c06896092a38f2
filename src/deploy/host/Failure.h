#ifndef ZET_FAILURE_H
#define ZET_FAILURE_H

#include <string>

#include "zet/ZETProblem.h"
#include "zet/deploy/Failure.h"  // IWYU pragma: export

namespace ZET::Deploy {

/// A failure, told as one problem of the file among others; the text then names another file that it is
/// about.
Problem ProblemOf(const std::string& file, const Failure& failure);

}  // namespace ZET::Deploy

#endif
