#include "deploy/targets/ChangedBlocks.h"

#include <algorithm>
#include <set>
#include <string>

#include "deploy/state/History.h"
#include "deploy/state/store/Store.h"
#include "text/ManagedText.h"

namespace ZET::Deploy {

namespace {

using LineTest = std::function<bool(std::string_view line)>;

/// The lines of a block with the former line before it.
std::string WholeBlock(const Text::ManagedText& text, const Text::ManagedRegion& block) {
    std::string lines;
    if (block.formerLine != 0) lines.append(text.Line(block.formerLine).text).append("\n");
    for (std::size_t number = block.first; number <= block.last; ++number)
        lines.append(text.Line(number).text).append("\n");
    return lines;
}

bool HasLineToGo(const Text::ManagedText& text, const Text::ManagedRegion& block, const LineTest& isToGo) {
    for (std::size_t number = block.first; number <= block.last; ++number) {
        const Text::ManagedLine& line = text.Line(number);
        if (line.IsContent() && isToGo(line.text)) return true;
    }
    return false;
}

std::set<std::string> BlocksIn(std::string_view text, const LineTest& isToGo) {
    const Text::ManagedText managed(text);
    std::set<std::string> blocks;
    for (const Text::ManagedRegion& region : managed.Regions()) {
        if (region.kind == Text::RegionKind::Block && HasLineToGo(managed, region, isToGo))
            blocks.insert(WholeBlock(managed, region));
    }
    return blocks;
}

}  // namespace

bool HasChangedBlocks(Host& host, const KnownFile& known, std::string_view text, const LineTest& isToGo) {
    if (!known.state.text) return false;
    bool isAnyChanged = false;
    host.HostHistory().TryLook([&](Store& store) {
        const std::set<std::string> left =
            BlocksIn(store.Text(*known.state.text), [](std::string_view) { return true; });
        const std::set<std::string> now = BlocksIn(text, isToGo);
        isAnyChanged = !std::includes(left.begin(), left.end(), now.begin(), now.end());
    });
    return isAnyChanged;
}

}  // namespace ZET::Deploy
