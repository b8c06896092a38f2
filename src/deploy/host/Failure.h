#ifndef ZET_FAILURE_H
#define ZET_FAILURE_H

#include <string>

#include "zet/ZETProblem.h"
#include "zet/deploy/Failure.h"

namespace ZET::Deploy {

/// A failure with the file, told as one problem among others.
Problem ProblemOf(const std::string& file, const Failure& failure);

}  // namespace ZET::Deploy

#endif
