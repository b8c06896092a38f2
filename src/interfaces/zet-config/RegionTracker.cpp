#include "RegionTracker.h"

#include <string>

#include "Messages.h"

namespace ZET {

RegionTracker::Line RegionTracker::TrackMarker(std::string_view line) {
    if (line.starts_with(m_beginMarker)) {
        if (m_inside) Warn(m_beginMarker);
        m_inside = true;
        return Line::Begin;
    }
    if (!line.starts_with(m_endMarker)) return Line::Ordinary;
    if (!m_inside) return Line::StrayEnd;
    m_inside = false;
    return Line::End;
}

void RegionTracker::Warn(std::string_view marker) const {
    const std::string token(marker);
    Message message(kFileSource, m_function, Here());
    Log(ZETLogWarning,
        message.Format()(2, message.Translated(kModuleDomain, "Unexpected token '%s' in line %d."),
                         token.c_str(), static_cast<int>(m_text.LineNumber())));
}

}  // namespace ZET
