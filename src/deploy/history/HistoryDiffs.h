#ifndef ZET_HISTORY_DIFFS_H
#define ZET_HISTORY_DIFFS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "deploy/targets/Deployment.h"
#include "zet/deploy/History.h"

namespace ZET::Deploy {

/// What the entry changed, or, with `to`, how the files after `to` differ from those after `number`. An empty
/// `file` means all files.
std::vector<HistoryDiff> DiffHistory(Deployment& product, std::int64_t number, std::optional<std::int64_t> to,
                                     const std::string& file);

}  // namespace ZET::Deploy

#endif
