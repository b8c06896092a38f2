#ifndef ZET_LOST_TEXT_H
#define ZET_LOST_TEXT_H

#include <cstdint>
#include <string>

#include "deploy/state/Host.h"

namespace ZET::Deploy {

/// Warns if the history does not keep a text of that size, which somebody made and a command replaces. The
/// reader knows the file by `name`.
void WarnOfLostText(Host& host, const std::string& name, std::uint64_t size);

}  // namespace ZET::Deploy

#endif
