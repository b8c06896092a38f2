#ifndef ZET_DIFFERENCE_FROM_LEFT_H
#define ZET_DIFFERENCE_FROM_LEFT_H

#include <cstdint>
#include <string>

#include "deploy/state/store/Records.h"

namespace ZET::Deploy {

/// In what the file is another one than the entry left.
std::string DifferenceBetween(const RecordedState& now, const RecordedState& left);

/// One with lines that a commit found to be as it would have set them is in none.
std::string NotAsLeftBy(std::int64_t number);

}  // namespace ZET::Deploy

#endif
