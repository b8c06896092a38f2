#include "text/RegionScan.h"

#include <algorithm>
#include <array>

#include "text/Markers.h"
#include "text/repair/NearMarker.h"

namespace ZET {

namespace {

/// More than a notice has in any language.
constexpr std::size_t kMostLinesOfNotice = 100;

/// Dashes, and what else a hand may leave around a marker; a part of a longer character may be either.
constexpr std::array<bool, 256> EdgeBytes() {
    std::array<bool, 256> isEdge = {};
    for (const char c : std::string_view(" \t\r#;/!\"'-"))
        isEdge[static_cast<unsigned char>(c)] = true;
    for (std::size_t c = 0x80; c < isEdge.size(); ++c)
        isEdge[c] = true;
    return isEdge;
}

constexpr std::array<bool, 256> kIsEdge = EdgeBytes();

bool CanBeDash(char c) {
    return c == '-' || static_cast<unsigned char>(c) >= 0x80;
}

template <typename Iterator>
bool BeginsWithDash(Iterator from, Iterator end) {
    for (; from != end && kIsEdge[static_cast<unsigned char>(*from)]; ++from)
        if (CanBeDash(*from)) return true;
    return false;
}

/// Cheap, and true of every line that is nearly a marker.
bool CanBeNearMarker(std::string_view line) {
    return BeginsWithDash(line.begin(), line.end()) || BeginsWithDash(line.rbegin(), line.rend());
}

bool HasNothingBehind(std::string_view line, Marker marker) {
    return line.find_first_not_of(" \t\r", MarkerText(marker).size()) == std::string_view::npos;
}

}  // namespace

void RegionScan::Take(std::string_view lines) {
    std::size_t mention = lines.find(kMarkerStart);
    for (std::size_t begin = 0, end = 0; begin < lines.size(); begin = end + 1) {
        end = std::min(lines.find('\n', begin), lines.size());
        const bool mentionsMarker = mention < end;
        ++m_number;
        m_isSound = m_isSound && TakeLine(lines.substr(begin, end - begin), mentionsMarker);
        if (mentionsMarker) mention = lines.find(kMarkerStart, end);
    }
}

bool RegionScan::TakeLine(std::string_view line, bool mentionsMarker) {
    if (m_isInNotice && !KeepOfNotice(line)) return false;
    if (mentionsMarker) return TakeMention(line);
    return !CanBeNearMarker(line) || !FindNearMarker(line);
}

bool RegionScan::TakeMention(std::string_view line) {
    const Marker marker = MarkerOf(line);
    if (marker == Marker::BlockBegin) return HasNothingBehind(line, marker) && TakeBegin();
    if (marker == Marker::BlockEnd) return HasNothingBehind(line, marker) && TakeEnd();
    if (FindNearMarker(line) || FindGluedMarker(line)) return false;
    if (marker == Marker::FormerLine) return m_blockBegin == 0;
    if (marker == Marker::Notice) return TakeNoticeBegin(line);
    return marker != Marker::CommentEnd || TakeCommentEnd(line);
}

bool RegionScan::TakeBegin() {
    if (m_blockBegin != 0) return false;
    m_blockBegin = m_number;
    m_hasRegions = true;
    return true;
}

/// The system writes one line into each block.
bool RegionScan::TakeEnd() {
    const bool isWhole = m_blockBegin != 0 && m_number == m_blockBegin + 2;
    m_blockBegin = 0;
    return isWhole;
}

bool RegionScan::TakeNoticeBegin(std::string_view line) {
    m_hasRegions = true;
    if (!CountsAsComment()) return true;
    if (m_isInNotice || !HasNothingBehind(line, Marker::Notice)) return false;
    m_isInNotice = true;
    m_notice.clear();
    return true;
}

bool RegionScan::TakeCommentEnd(std::string_view line) {
    if (!CountsAsComment() || !m_isInNotice) return true;
    m_isInNotice = false;
    m_notice.pop_back();
    const std::vector<std::string_view> lines(m_notice.begin(), m_notice.end());
    return HasNothingBehind(line, Marker::CommentEnd) &&
           m_noticeTexts->ForeignLine(lines, 0, lines.size()) == lines.size();
}

bool RegionScan::KeepOfNotice(std::string_view line) {
    m_notice.emplace_back(line);
    return m_notice.size() <= kMostLinesOfNotice;
}

}  // namespace ZET
