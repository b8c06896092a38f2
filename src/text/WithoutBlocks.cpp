#include "text/WithoutBlocks.h"

#include "text/ManagedText.h"

namespace ZET::Text {

namespace {

using RegionTest = std::function<bool(const ManagedRegion& region)>;

/// The text without the regions that `isToGo` selects, with the former lines before such blocks restored.
std::string Without(const ManagedText& managed, std::string_view text, const RegionTest& isToGo) {
    std::string rest;
    rest.reserve(text.size());
    for (const ManagedRegion& region : managed.Regions()) {
        if (isToGo(region)) continue;
        const bool isOfBlock = region.kind == RegionKind::FormerLine && region.block != 0 &&
                               isToGo(managed.RegionOf(region.block));
        for (std::size_t number = region.first; number <= region.last; ++number)
            rest.append(isOfBlock ? managed.FormerText(number) : managed.Line(number).text).append("\n");
    }
    // The last line had no line feed, and nothing after it was removed.
    const bool endsOpen = !text.empty() && text.back() != '\n';
    if (endsOpen && !rest.empty() && !isToGo(managed.Regions().back())) rest.pop_back();
    return rest;
}

}  // namespace

std::string WithoutBlocks(std::string_view text) {
    const ManagedText managed(text);
    // The lines of blocks and notices are the product's alone, so they are removed completely.
    return Without(managed, text, [](const ManagedRegion& region) {
        return region.kind == RegionKind::Block || region.kind == RegionKind::Notice;
    });
}

std::string WithoutBlocksOf(std::string_view text, const std::function<bool(std::string_view line)>& isToGo) {
    const ManagedText managed(text);
    return Without(managed, text, [&](const ManagedRegion& region) {
        const bool hasLine = region.kind == RegionKind::Block && region.last == region.first + 2;
        return hasLine && isToGo(managed.Line(region.first + 1).text);
    });
}

}  // namespace ZET::Text
