#ifndef ZET_TARGET_CHECK_H
#define ZET_TARGET_CHECK_H

#include <set>
#include <string>
#include <vector>

#include "deploy/targets/Deployment.h"
#include "deploy/targets/Targets.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// What a commit is about, and everything that would keep it from succeeding.
struct CheckedTargets {
    std::vector<Target> targets;
    std::vector<Problem> problems;
    std::set<std::string> used;  ///< the placeholders that the templates use
};

/// Checks the list of targets, the templates of the product's role that `templateNames` has (all when it is
/// empty) and their targets, all in one go; nothing is written. A template that the list does not have is a
/// `UsageError`, a list that cannot be read a `Failure`.
CheckedTargets CheckTargets(Deployment& product, const std::vector<std::string>& templateNames);

/// The problems of one template, as far as they concern it alone. The placeholders that it uses are added to
/// `used`, unless it is null.
std::vector<Problem> CheckTemplateFile(Deployment& product, const std::string& templateName,
                                       const StringMap& values, std::set<std::string>* used = nullptr);

}  // namespace ZET::Deploy

#endif
