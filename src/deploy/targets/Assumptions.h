#ifndef ZET_ASSUMPTIONS_H
#define ZET_ASSUMPTIONS_H

#include "deploy/targets/Deployment.h"

namespace ZET::Deploy {

/// From now on, parameters have these values: for a dry run, which asks what would be if. What cannot be
/// assumed is a `UsageError`.
void AssumeParameters(Deployment& product, const StringMap& values);

}  // namespace ZET::Deploy

#endif
