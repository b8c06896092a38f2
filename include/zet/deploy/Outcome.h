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
    std::vector<FileOutcome> files;     ///< in the order of the work
    std::vector<std::string> restarts;  ///< services to restart: they do not notice changes themselves
    std::vector<std::string> reloads;   ///< other services, which only need to read their files again
    std::optional<std::int64_t> entry;  ///< number of its entry in the history; none if nothing was recorded
    bool isComplete = true;             ///< false if something could not be put back
};

}  // namespace ZET::Deploy

#endif
