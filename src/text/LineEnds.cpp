#include "text/LineEnds.h"

namespace ZET {

void LineEndScan::Take(std::string_view lines, std::size_t before) {
    const auto has = [&](std::string_view text) { return lines.find(text) != std::string_view::npos; };
    // Nothing to learn, as in most of most files.
    if (m_isFirstCarriageReturn == false && !has("\r") && !has(kMarkerStart)) {
        m_emptyLine = 0;
        return;
    }
    for (std::size_t end = 0; (end = lines.find('\n')) != std::string_view::npos;
         lines.remove_prefix(end + 1)) {
        TakeLine(lines.substr(0, end), ++before);
    }
}

void LineEndScan::TakeLine(std::string_view line, std::size_t number) {
    const Marker marker = MarkerOf(line);
    if (m_emptyLine != 0 && marker != Marker::BlockBegin) Count(false, m_emptyLine);
    m_emptyLine = 0;
    if (m_until != Marker::None) {
        if (marker == m_until) m_until = Marker::None;
    } else if (marker == Marker::BlockBegin) {
        m_until = Marker::BlockEnd;
    } else if (marker == Marker::Notice) {
        m_until = Marker::CommentEnd;
    } else if (line.empty()) {
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
    if (line.ends_with('\r')) line.pop_back();
    return line;
}

}  // namespace ZET
