#include "LineEnds.h"

#include <algorithm>
#include <optional>

#include "Markers.h"

namespace ZET {

namespace {

class LineEndScan {
  public:
    /// A line with its number, which a line feed ended. False when there is nothing more to learn.
    bool Take(std::string_view line, std::size_t number) {
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
        return m_ends.otherLine == 0;
    }

    LineEnds End() {
        if (m_emptyLine != 0) Count(false, m_emptyLine);
        m_ends.areCarriageReturns = m_isFirstCarriageReturn.value_or(false) && m_ends.otherLine == 0;
        return m_ends;
    }

  private:
    void Count(bool isCarriageReturn, std::size_t number) {
        if (!m_isFirstCarriageReturn) m_isFirstCarriageReturn = isCarriageReturn;
        if (*m_isFirstCarriageReturn == isCarriageReturn || m_ends.otherLine != 0) return;
        m_ends.otherLine = number;
        m_ends.isOtherCarriageReturn = isCarriageReturn;
    }

    LineEnds m_ends;
    std::optional<bool> m_isFirstCarriageReturn;
    Marker m_until = Marker::None;  ///< inside of a region: its end
    std::size_t m_emptyLine = 0;    ///< that may be the one before a block that was appended
};

}  // namespace

LineEnds LineEndsOf(std::string_view text) {
    if (text.find('\r') == std::string_view::npos) return {};
    LineEndScan scan;
    std::size_t number = 0;
    for (std::size_t end = 0; (end = text.find('\n')) != std::string_view::npos; text.remove_prefix(end + 1))
        if (!scan.Take(text.substr(0, end), ++number)) break;
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
