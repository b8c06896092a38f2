#ifndef ZET_TARGET_LIST_READER_H
#define ZET_TARGET_LIST_READER_H

#include <functional>
#include <string>
#include <vector>

#include "deploy/lists/Targets.h"

namespace ZET::Deploy {

struct ListText {
    std::string file;  ///< used in messages only
    std::string text;
};

/// Returns the value of a parameter.
using ParameterValue = std::function<std::string(const std::string& name)>;

/// Reads lists of targets. Each adds to those before it, or changes single keys of their entries. What is
/// wrong inside becomes a problem, list by list, in the order of the lines. A target whose file cannot be
/// told from its entry has an empty path.
TargetList ReadTargetTexts(const std::vector<ListText>& lists, const ParameterValue& valueOf);

}  // namespace ZET::Deploy

#endif
