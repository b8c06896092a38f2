#ifndef ZET_CHECK_H
#define ZET_CHECK_H

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "deploy/targets/Deployment.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// What a check of the configuration found.
struct CheckResult {
    std::vector<Problem> problems;
    std::vector<Problem> warnings;  ///< harmless, but hardly meant
    std::size_t checksNotRun = 0;   ///< own check commands of targets that could have been run
    /// The template values that no template uses. None if only some templates were checked: the others may
    /// use them.
    std::optional<std::set<std::string>> unusedValues;
};

/// Finds all that would keep a commit of these templates, or of all if none is named, from succeeding. Runs
/// the targets' own check commands, and writes nothing.
CheckResult Check(Deployment& product, const std::vector<std::string>& templateNames);

}  // namespace ZET::Deploy

#endif
