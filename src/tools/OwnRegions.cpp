#include "OwnRegions.h"

namespace ZET {

void OwnRegions::Regions::Take(Marker marker, std::size_t line) {
    if (openLine == 0) {
        if (marker != begin) return;
        openLine = line;
        any = true;
    } else if (marker == end) {
        openLine = 0;
    } else if (marker == begin && lostEndLine == 0) {
        lostEndLine = openLine;
        nextLine = line;
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

std::string OwnRegions::LostEnd() const {
    for (const Regions* regions : {&m_block, &m_notice}) {
        if (regions->lostEndLine != 0 && regions->lostEndLine != regions->openLine)
            return LostEndOf(regions->name, regions->lostEndLine, regions->nextLine);
        if (regions->openLine != 0) return LostEndOf(regions->name, regions->openLine, 0);
    }
    return "";
}

std::string LostEndOf(const std::string& region, std::size_t line, std::size_t next) {
    const std::string start =
        "the " + region + " that begins in line " + std::to_string(line) + " has no end";
    const std::string loss = next == 0 ? ", and all that follows"
                                       : " before the next begins in line " + std::to_string(next) +
                                             ", and all up to the end of that one";
    return start + loss + " would be dropped (\"doctor\" tells a repair)";
}

}  // namespace ZET
