#ifndef ZET_WITHOUT_BLOCKS_H
#define ZET_WITHOUT_BLOCKS_H

#include <functional>
#include <string>
#include <string_view>

namespace ZET::Text {

/// The text without the product's additions: managed blocks and the notice are removed, and the former line
/// before each block is restored. All other lines stay as they are. The markers must be sound.
std::string WithoutBlocks(std::string_view text);

/// Removes only the blocks for whose line `isToGo` returns true; notices stay.
std::string WithoutBlocksOf(std::string_view text, const std::function<bool(std::string_view line)>& isToGo);

}  // namespace ZET::Text

#endif
