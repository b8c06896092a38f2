#ifndef ZET_LEFT_OVERS_H
#define ZET_LEFT_OVERS_H

#include <sys/types.h>

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "deploy/state/Host.h"
#include "deploy/state/store/Records.h"

namespace ZET::Deploy {

/// A file at which a run may have been killed.
struct CutShortFile {
    std::string path;                    ///< of the real file
    std::int64_t begun = 0;              ///< when the run began to write, in nanoseconds since 1970
    bool isAnyText = false;              ///< what was going to be written was not known yet
    std::vector<std::string> texts{};    ///< what was being written is the beginning of one of these,
    std::vector<RecordedState> whole{};  ///< or all of one of these, whose texts are not kept
    std::set<uid_t> owners{};            ///< to whom the run may have given it
};

/// Removes the temporary files that the run left beside the file, and reports it. What has the name of one,
/// but is not surely the run's work, is reported and stays. Only under the product's lock.
void ClearLeftOvers(Host& host, const CutShortFile& file);

}  // namespace ZET::Deploy

#endif
