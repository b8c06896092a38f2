#ifndef ZET_EDITED_BLOCKS_H
#define ZET_EDITED_BLOCKS_H

#include <cstddef>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "deploy/state/Host.h"
#include "deploy/state/store/Records.h"

namespace ZET::Deploy {

/// A managed block with which somebody's work would go.
struct EditedBlock {
    std::size_t line = 0;       ///< the first one of the block's own
    bool isFormerGone = false;  ///< nothing would come in its place; otherwise, somebody changed its lines
};

/// Selects the blocks that are to go, by their lines without the markers.
using BlockTest = std::function<bool(std::string_view lines)>;

/// The first of the blocks to go that no change of the history has made as it is in `text`, or that has lost
/// its former line. None if the history cannot tell; an unusable one is reported as a warning.
std::optional<EditedBlock> EditedBlockIn(Host& host, const KnownFile& known, std::string_view text,
                                         const BlockTest& isToGo);

/// The lines of the blocks to go that lost their former lines: without them, nothing would be left.
std::set<std::string> LinesWithoutFormer(Host& host, const KnownFile& known, std::string_view text,
                                         const BlockTest& isToGo);

}  // namespace ZET::Deploy

#endif
