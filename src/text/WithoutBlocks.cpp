#include "text/WithoutBlocks.h"

#include "text/ManagedText.h"

namespace ZET::Text {

namespace {

/// Whether the region's lines are the product's alone, so that nothing is left of them.
bool IsOfTheProduct(const ManagedRegion& region) {
    return region.kind == RegionKind::Block || region.kind == RegionKind::Notice;
}

}  // namespace

std::string WithoutBlocks(std::string_view text) {
    const ManagedText managed(text);
    std::string rest;
    rest.reserve(text.size());
    for (const ManagedRegion& region : managed.Regions()) {
        if (IsOfTheProduct(region)) continue;
        const bool isOfBlock = region.kind == RegionKind::FormerLine && region.block != 0;
        for (std::size_t number = region.first; number <= region.last; ++number)
            rest.append(isOfBlock ? managed.FormerText(number) : managed.Line(number).text).append("\n");
    }
    // Its last line had no end, and nothing of the product's stood behind it.
    const bool endsOpen = !text.empty() && text.back() != '\n';
    if (endsOpen && !rest.empty() && !IsOfTheProduct(managed.Regions().back())) rest.pop_back();
    return rest;
}

}  // namespace ZET::Text
