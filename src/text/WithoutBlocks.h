#ifndef ZET_WITHOUT_BLOCKS_H
#define ZET_WITHOUT_BLOCKS_H

#include <string>
#include <string_view>

namespace ZET::Text {

/// The text without what the product put into it: its managed blocks go, each former line before a block
/// comes back, and so does the notice. All other lines stay as they are. The markers must be sound.
std::string WithoutBlocks(std::string_view text);

}  // namespace ZET::Text

#endif
