#ifndef ZET_ASSUMPTIONS_H
#define ZET_ASSUMPTIONS_H

#include "deploy/targets/Deployment.h"

namespace ZET::Deploy {

/// The product's directories among the values, for a dry run: a host has to know them before it reads
/// anything. One that cannot be is a `UsageError`.
void AssumeDirectories(Options& options, const StringMap& values);

/// From now on, parameters have these values: for a dry run, which asks what would be if. What cannot be
/// assumed is a `UsageError`. The directories among them are the product's already.
void AssumeParameters(Deployment& product, const StringMap& values);

}  // namespace ZET::Deploy

#endif
