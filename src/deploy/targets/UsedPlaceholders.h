#ifndef ZET_USED_PLACEHOLDERS_H
#define ZET_USED_PLACEHOLDERS_H

#include <set>
#include <string>

#include "deploy/targets/Deployment.h"

namespace ZET::Deploy {

/// The placeholders that the host's templates, edits and values use, whatever role they are for and whether
/// they are in force or not, and those in `used`.
std::set<std::string> UsedAnywhere(Deployment& product, const std::set<std::string>& used = {});

}  // namespace ZET::Deploy

#endif
