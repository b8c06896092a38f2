#ifndef ZET_TARGET_CHECK_H
#define ZET_TARGET_CHECK_H

#include <sys/stat.h>
#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "deploy/lists/Targets.h"
#include "deploy/targets/Deployment.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// What was seen of templates when they were checked.
struct SeenTemplates {
    std::set<std::string> used;  ///< the placeholders that they use
    std::uintmax_t size = 0;     ///< of all templates together
};

/// What was seen of one target that a plan needs until it is written.
struct TargetPlace {
    std::string path;                    ///< of its real file, links followed
    bool hasWorkingCopy = false;         ///< its template has one
    std::optional<mode_t> modeOfCopy{};  ///< of the working copy, if it is no link
    bool hasCompanion = false;           ///< a reserve, or a mark that there was nothing
};

/// All that was seen of one target.
struct CheckedPlace : TargetPlace {
    std::optional<struct stat> status{};  ///< of the file; none: there is no such file
};

/// What a commit is about, and everything that would keep it from succeeding.
struct CheckedTargets {
    std::vector<Target> targets;
    std::vector<CheckedPlace> places;  ///< one for each target, if there are no problems
    std::vector<Problem> problems;
    SeenTemplates templates;
};

/// Checks the list of targets, the templates of the product's role that `templateNames` has (all if it is
/// empty) and their targets, all in one go; writes nothing. Throws a `UsageError` for a template that the
/// list does not have, and a `Failure` for a list that cannot be read.
CheckedTargets CheckTargets(Deployment& product, const std::vector<std::string>& templateNames);

}  // namespace ZET::Deploy

#endif
