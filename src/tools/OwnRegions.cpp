#include "OwnRegions.h"

#include <algorithm>

namespace ZET {

void OwnRegions::Regions::Take(Marker marker, std::size_t line) {
    if (openLine != 0) {
        if (marker == end) openLine = 0;
    } else if (marker == begin) {
        openLine = line;
        any = true;
    }
}

void OwnRegions::Take(std::string_view line) {
    ++m_line;
    const Marker marker = MarkerOf(line);
    if (marker == Marker::None) return;
    const bool wasInBlock = m_block.openLine != 0;
    m_block.Take(marker, m_line);
    // Blocks go first; what they hold is not there any more when the notices go.
    if (!wasInBlock && m_block.openLine == 0) m_notice.Take(marker, m_line);
}

std::size_t OwnRegions::OpenLine() const {
    const auto [first, second] = std::minmax(m_block.openLine, m_notice.openLine);
    return first != 0 ? first : second;
}

}  // namespace ZET
