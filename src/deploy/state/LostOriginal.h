#ifndef ZET_LOST_ORIGINAL_H
#define ZET_LOST_ORIGINAL_H

#include <string>

#include "deploy/state/Host.h"

namespace ZET::Deploy {

/// Whether the kept entries tell that the product has written the file since it first knew it. Not if a
/// commit found the file as it would make it (its own original), or if the file is back as it was before.
bool IsKnownAsWritten(Host& host, const std::string& path);

/// Whether the file is what the product wrote, and nothing beside it tells what was there before: a reserve
/// of it would not be the original.
bool IsOriginalLost(Host& host, const std::string& path);

/// Whether the history has nothing of the file, nor of its companions. False if this user may not read it.
bool IsUnseen(Host& host, const std::string& path);

void WarnOfLostOriginal(Host& host, const std::string& path);

}  // namespace ZET::Deploy

#endif
