#ifndef ZET_DEPLOY_OUTCOME_H
#define ZET_DEPLOY_OUTCOME_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "zet/deploy/FileOutcome.h"

namespace ZET::Deploy {

/// What a call did on the host.
struct Outcome {
    std::vector<FileOutcome> files;     ///< in the order in which they were done
    std::vector<std::string> restarts;  ///< the services that do not notice by themselves what was changed
    std::vector<std::string> reloads;   ///< those of them that need only read it again
    std::optional<std::int64_t> entry;  ///< its number in the history; none: nothing was recorded
    bool isComplete = true;             ///< nothing stays that should have been put back
};

}  // namespace ZET::Deploy

#endif
