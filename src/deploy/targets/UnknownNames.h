#ifndef ZET_UNKNOWN_NAMES_H
#define ZET_UNKNOWN_NAMES_H

#include <set>
#include <string>
#include <vector>

#include "deploy/state/ParameterCheck.h"
#include "deploy/targets/Deployment.h"
#include "deploy/targets/Templates.h"

/// Names of parameters and values that nobody knows: most of them are mistyped.
namespace ZET::Deploy {

/// What the host gives and nothing uses, and what a list asks for and nobody gives. `used` are placeholders
/// that are known to be used.
UnusedParameters FindUnknownNames(Deployment& product, const std::set<std::string>& used);

/// Of these, the parameters with names like those of the product's. Reads other templates only if there may
/// be some.
std::vector<Problem> FindMistypedNames(Deployment& product, const std::set<std::string>& used);

/// What would be said of a line that gives this name, without its place. Nothing if a list cannot be read,
/// since nobody can tell then.
UnusedParameters JudgeName(Deployment& product, const std::string& name);

/// Warns of values that the caller gives and the template does not use; `used` are the placeholders that it
/// asks for.
void WarnOfUnusedValues(Deployment& product, const Rendering& rendering, const std::set<std::string>& used);

}  // namespace ZET::Deploy

#endif
