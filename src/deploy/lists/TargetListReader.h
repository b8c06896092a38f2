#ifndef ZET_TARGET_LIST_READER_H
#define ZET_TARGET_LIST_READER_H

#include <functional>
#include <string>
#include <vector>

#include "deploy/lists/Targets.h"

namespace ZET::Deploy {

struct ListText {
    std::string file;  ///< only named
    std::string text;
};

/// What value a parameter has.
using ParameterValue = std::function<std::string(const std::string& name)>;

/// Reads lists of targets, each of which adds to what those before it have, or changes single keys of it.
/// Everything that is wrong inside is a problem, list by list in the order of the lines. A target whose file
/// cannot be told from its entry has no path.
TargetList ReadTargetTexts(const std::vector<ListText>& lists, const ParameterValue& valueOf);

}  // namespace ZET::Deploy

#endif
