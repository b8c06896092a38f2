#ifndef ZET_ASSUMPTIONS_H
#define ZET_ASSUMPTIONS_H

#include <optional>
#include <string>

#include "deploy/targets/Deployment.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// The product's directories among the values, for a dry run: a host has to know them before it reads
/// anything. One that cannot be is a `UsageError`.
void AssumeDirectories(Options& options, const StringMap& values);

/// From now on, parameters have these values: for a dry run, which asks what would be if. What cannot be
/// assumed is a `UsageError`. The directories among them are the product's already.
void AssumeParameters(Deployment& product, const StringMap& values);

/// The same of one parameter that is going to have the value, and what a check of the role's templates and
/// edits then blames on it. Where a list cannot be read, nobody can tell: none.
std::optional<Problem> ProblemInTemplates(Deployment& product, const std::string& name,
                                          const std::string& value);

}  // namespace ZET::Deploy

#endif
