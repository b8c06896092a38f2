#ifndef ZET_ASSUMPTIONS_H
#define ZET_ASSUMPTIONS_H

#include <optional>
#include <string>

#include "deploy/targets/Deployment.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// Takes the product's directories that are among the values into the options of a dry run: a host has to
/// know them before it reads anything. Throws a `UsageError` for a value that cannot be one.
void AssumeDirectories(Options& options, const StringMap& values);

/// Gives parameters these values from now on, for a dry run that asks what would be if. Throws a `UsageError`
/// for what cannot be assumed. The directories among them are the product's already.
void AssumeParameters(Deployment& product, const StringMap& values);

/// The same of one parameter that is going to have the value, and the first problem that a check of the
/// role's templates, edits and conditions then finds, and did not find before, and would not find with any
/// other value. Where a list cannot be read, nobody can tell: none. If there is none, warns of a value that
/// no condition names from now on.
std::optional<Problem> ProblemInTemplates(Deployment& product, const std::string& name,
                                          const std::string& value);

}  // namespace ZET::Deploy

#endif
