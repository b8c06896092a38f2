#ifndef ZET_CONDITION_CHECK_H
#define ZET_CONDITION_CHECK_H

#include <set>
#include <string>
#include <vector>

#include "deploy/targets/Deployment.h"
#include "zet/ZETProblem.h"

/// The conditions of the lists: a mistyped word in one of them, or in a value that they ask for, would take
/// files off the host.
namespace ZET::Deploy {

/// What is wrong with the conditions of the role's entries and with the values that they ask for.
struct ConditionFindings {
    std::vector<Problem> problems;
    std::vector<Problem> warnings;  ///< of values that no condition names
    std::vector<Problem> notGiven;  ///< warnings of parameters that nobody gives
};

ConditionFindings CheckConditions(Deployment& product);

/// The parameters that the conditions of the host's lists ask for.
std::set<std::string> ParametersAskedFor(Deployment& product);

/// The placeholders in `used`, and those of these parameters.
std::set<std::string> UsedOrAskedFor(Deployment& product, std::set<std::string> used);

}  // namespace ZET::Deploy

#endif
