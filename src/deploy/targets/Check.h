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
    std::vector<Problem> warnings;  ///< what is harmless, but hardly meant so
    std::size_t checksNotRun = 0;   ///< of the targets' own check commands, though they could have been
    /// The template values that no template uses; none where only some templates were checked, of which
    /// nothing can be said about all.
    std::optional<std::set<std::string>> unusedValues;
};

/// Everything that would keep a commit of these templates, all when there are none, from succeeding, the
/// targets' own check commands included; nothing is written.
CheckResult Check(Deployment& product, const std::vector<std::string>& templateNames);

}  // namespace ZET::Deploy

#endif
