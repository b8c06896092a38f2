#ifndef ZET_LOST_ORIGINAL_H
#define ZET_LOST_ORIGINAL_H

#include <string>

#include "deploy/state/Host.h"

namespace ZET::Deploy {

/// Whether entries that are kept tell that the product wrote the file since it knows it. One that a commit
/// found as it makes it was not written: it is its own original; nor is one that is back as it was before.
bool IsKnownAsWritten(Host& host, const std::string& path);

/// Whether the file is what the product wrote, and nothing beside it tells what was there before: a reserve
/// of it would be none of the original.
bool IsOriginalLost(Host& host, const std::string& path);

void WarnOfLostOriginal(Host& host, const std::string& path);

}  // namespace ZET::Deploy

#endif
