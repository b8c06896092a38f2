#include "text/ManagedText.h"

#include <algorithm>

#include "text/Lines.h"

namespace ZET::Text {

ManagedText::ManagedText(std::string_view text) {
    m_lines.reserve(static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1);
    Text::Regions regions;
    while (!text.empty()) {
        const std::string_view line = TakeLine(text).text;
        AddLine(line, regions.Take(MarkerOf(line), m_lines.size() + 1));
    }
    for (ManagedRegion& region : m_regions) {
        const std::size_t openSince = regions.OpenSince(region.kind);
        region.isClosed = openSince == 0 || region.first < openSince;
    }
    LinkFormerLines();
}

std::string_view ManagedText::FormerText(std::size_t number) const {
    return Line(number).text.substr(MarkerText(Marker::FormerLine).size());
}

void ManagedText::AddLine(std::string_view text, const RegionPlace& place) {
    const auto number = static_cast<std::uint32_t>(m_lines.size() + 1);
    const bool isFirst = place.step == RegionStep::Begin || place.kind == RegionKind::FormerLine;
    if (isFirst || m_regions.empty() || m_regions.back().kind != place.kind)
        m_regions.push_back({place.kind, true, number, number});
    m_regions.back().last = number;
    m_lines.push_back({text, static_cast<std::uint32_t>(m_regions.size() - 1), place.step});
}

void ManagedText::LinkFormerLines() {
    for (std::size_t i = 1; i < m_regions.size(); ++i) {
        if (m_regions[i].kind != RegionKind::Block || m_regions[i - 1].kind != RegionKind::FormerLine)
            continue;
        m_regions[i].formerLine = m_regions[i - 1].first;
        m_regions[i - 1].block = m_regions[i].first;
    }
}

}  // namespace ZET::Text
