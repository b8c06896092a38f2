#ifndef ZET_WITHOUT_BLOCKS_H
#define ZET_WITHOUT_BLOCKS_H

#include <functional>
#include <string>
#include <string_view>

namespace ZET::Text {

/// The text without what the product put into it: its managed blocks go, each former line before a block
/// comes back, and so does the notice. All other lines stay as they are. The markers must be sound.
std::string WithoutBlocks(std::string_view text);

/// The same of the blocks alone whose line `isToGo` says so of; notices stay.
std::string WithoutBlocksOf(std::string_view text, const std::function<bool(std::string_view line)>& isToGo);

}  // namespace ZET::Text

#endif
