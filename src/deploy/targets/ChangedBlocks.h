#ifndef ZET_CHANGED_BLOCKS_H
#define ZET_CHANGED_BLOCKS_H

#include <functional>
#include <string_view>

#include "deploy/state/Host.h"
#include "deploy/state/store/Records.h"

namespace ZET::Deploy {

/// Whether the text has a managed block of lines that `isToGo` selects, which somebody changed since the
/// product left the file: its line, or the former line that is kept before it. Not if the history cannot
/// tell, which is reported as a warning if it cannot be used.
bool HasChangedBlocks(Host& host, const KnownFile& known, std::string_view text,
                      const std::function<bool(std::string_view line)>& isToGo);

}  // namespace ZET::Deploy

#endif
