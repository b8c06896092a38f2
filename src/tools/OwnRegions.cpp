#include "OwnRegions.h"

#include <algorithm>

namespace ZET {

namespace {

/// More than the longest marker has.
constexpr std::size_t kEnough = 64;

}  // namespace

void OwnRegions::Regions::Take(Marker marker, std::size_t line) {
    if (openLine != 0) {
        if (marker == end) openLine = 0;
    } else if (marker == begin) {
        openLine = line;
        any = true;
    }
}

void OwnRegions::Take(std::string_view piece) {
    while (!piece.empty()) {
        const std::size_t length = piece.find('\n');
        const std::string_view line = piece.substr(0, length);
        const bool isWhole = length != std::string_view::npos;
        if (isWhole && m_start.empty()) {
            TakeLine(line);
        } else {
            m_start.append(line.substr(0, kEnough - m_start.size()));
            if (isWhole) End();
        }
        piece.remove_prefix(isWhole ? length + 1 : piece.size());
    }
}

void OwnRegions::End() {
    if (m_start.empty()) return;
    TakeLine(m_start);
    m_start.clear();
}

std::size_t OwnRegions::OpenLine() const {
    const auto [first, second] = std::minmax(m_block.openLine, m_notice.openLine);
    return first != 0 ? first : second;
}

void OwnRegions::TakeLine(std::string_view start) {
    ++m_line;
    if (!start.starts_with('#')) return;
    const Marker marker = MarkerOf(start);
    const bool wasInBlock = m_block.openLine != 0;
    m_block.Take(marker, m_line);
    // Blocks go first; what they hold is not there any more when the notices go.
    if (!wasInBlock && m_block.openLine == 0) m_notice.Take(marker, m_line);
}

}  // namespace ZET
