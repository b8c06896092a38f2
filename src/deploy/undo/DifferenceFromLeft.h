#ifndef ZET_DIFFERENCE_FROM_LEFT_H
#define ZET_DIFFERENCE_FROM_LEFT_H

#include <cstdint>
#include <string>

#include "deploy/state/store/Records.h"

namespace ZET::Deploy {

/// How the file differs from what the entry left, in words for a message.
std::string DifferenceBetween(const RecordedState& now, const RecordedState& left);

/// `number` is 0 for a file that is in no entry, since a commit found its lines to be what it would have set.
std::string NotAsLeftBy(std::int64_t number);

}  // namespace ZET::Deploy

#endif
