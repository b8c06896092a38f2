#include "text/LineEnds.h"

#include "posix/ByteBlock.h"
#include "text/Lines.h"

namespace ZET::Text {

void LineEndScan::Take(std::string_view lines, std::size_t before) {
    // As in most files, only the open regions matter here.
    if (m_isFirstCarriageReturn == false && lines.find('\r') == std::string_view::npos) {
        m_emptyLine = 0;
        return FollowMarkers(lines);
    }
    while (!lines.empty()) {
        const TextLine line = Text::TakeLine(lines);
        if (line.hasLineFeed) TakeLine(line.text, ++before);
    }
}

void LineEndScan::FollowMarkers(std::string_view lines) {
    // Searching a single byte takes a fifth of the time.
    if (lines.find(kMarkerStart.back()) == std::string_view::npos) return;
    for (std::size_t place = 0; (place = FindBytes(lines, kMarkerStart)) != std::string_view::npos;) {
        lines.remove_prefix(LinesBefore(lines, place).size());
        m_regions.Take(MarkerOf(Text::TakeLine(lines).text), 0);
    }
}

void LineEndScan::TakeLine(std::string_view line, std::size_t number) {
    const Marker marker = MarkerOf(line);
    if (m_emptyLine != 0 && marker != Marker::BlockBegin) Count(false, m_emptyLine);
    m_emptyLine = 0;
    const RegionKind kind = m_regions.Take(marker, number).kind;
    if (kind == RegionKind::Block || kind == RegionKind::Notice) return;
    if (line.empty()) {
        m_emptyLine = number;
    } else {
        Count(line.ends_with('\r'), number);
    }
}

void LineEndScan::Count(bool isCarriageReturn, std::size_t number) {
    if (!m_isFirstCarriageReturn) m_isFirstCarriageReturn = isCarriageReturn;
    if (*m_isFirstCarriageReturn == isCarriageReturn || m_ends.otherLine != 0) return;
    m_ends.otherLine = number;
    m_ends.isOtherCarriageReturn = isCarriageReturn;
}

LineEnds LineEndScan::End() {
    if (m_emptyLine != 0) Count(false, m_emptyLine);
    m_ends.areCarriageReturns = m_isFirstCarriageReturn.value_or(false) && m_ends.otherLine == 0;
    return m_ends;
}

LineEnds LineEndsOf(std::string_view text) {
    LineEndScan scan;
    scan.Take(text, 0);
    return scan.End();
}

std::string WithLineEnd(const std::string& line, const LineEnds& ends) {
    return ends.areCarriageReturns && !line.ends_with('\r') ? line + '\r' : line;
}

std::string WithoutLineEnd(std::string line) {
    line.resize(WithoutCarriageReturn(line).size());
    return line;
}

}  // namespace ZET::Text
