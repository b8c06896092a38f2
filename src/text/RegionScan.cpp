#include "text/RegionScan.h"

#include <array>
#include <utility>

#include "posix/ByteBlock.h"
#include "text/Lines.h"
#include "text/repair/NearMarker.h"

namespace ZET::Text {

namespace {

/// More than a notice has in any language.
constexpr std::size_t kMostLinesOfNotice = 100;

/// Dashes, and what else a hand may leave around a marker; a part of a longer character may be either.
constexpr std::array<bool, 256> EdgeBytes() {
    std::array<bool, 256> isEdge = {};
    for (const char c : std::string_view(" \t\r#;/-"))
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

/// Lines without a dash, as most are, are only counted: a third of the time of the look.
void RegionScan::PassOver(std::string_view& lines) {
    const std::string_view others = LinesBefore(lines, FindByteOrBeyondAscii(lines, '-'));
    if (others.empty()) return;
    m_number += CountLines(others);
    m_hasText = m_hasText || others.find_first_not_of('\n') != std::string_view::npos;
    lines.remove_prefix(others.size());
}

void RegionScan::Take(std::string_view lines) {
    for (;;) {
        if (!m_notices.IsInside() && !lines.starts_with(kMarkerStart)) PassOver(lines);
        if (lines.empty()) return;
        const std::string_view line = TakeLine(lines).text;
        ++m_number;
        const Marker marker = MarkerOf(line);
        const bool mentionsMarker =
            marker != Marker::None || line.find(kMarkerStart) != std::string_view::npos;
        LookForSpots(line, marker);
        m_isSound = m_isSound && TakeLineOf(line, mentionsMarker, marker);
        m_hasRegions = m_hasRegions || marker == Marker::BlockBegin || marker == Marker::Notice;
    }
}

/// A kept former line stands right before its block, the one notice above everything else, and a marker alone
/// in its line.
void RegionScan::LookForSpots(std::string_view line, Marker marker) {
    const std::size_t former = std::exchange(m_formerLine, marker == Marker::FormerLine ? m_number : 0);
    const bool hasBlock = former == 0 || (former + 1 == m_number && marker == Marker::BlockBegin);
    const bool isAlone =
        marker == Marker::None || marker == Marker::FormerLine || line.size() == MarkerText(marker).size();
    m_isSpotless = m_isSpotless && hasBlock && isAlone && IsInPlace(marker);
    m_hasText = m_hasText || !line.empty();
}

bool RegionScan::IsInPlace(Marker marker) const {
    switch (marker) {
        case Marker::Notice:
            return !m_hasText;
        case Marker::CommentEnd:
            return m_notices.IsInside() && !m_blocks.IsInside();
        default:
            return marker != Marker::TemplateComment;
    }
}

bool RegionScan::TakeLineOf(std::string_view line, bool mentionsMarker, Marker marker) {
    if (m_notices.IsInside()) {
        if (m_notice.size() == kMostLinesOfNotice) return false;
        m_notice.emplace_back(line);
    }
    if (mentionsMarker) return TakeMention(line, marker);
    return !CanBeNearMarker(line) || !FindNearMarker(line);
}

bool RegionScan::TakeMention(std::string_view line, Marker marker) {
    if (marker == Marker::BlockBegin || marker == Marker::BlockEnd)
        return HasNothingBehind(line, marker) && TakeBlockMarker(marker);
    if (FindNearMarker(line) || FindGluedMarker(line)) return false;
    if (marker == Marker::FormerLine) return !m_blocks.IsInside();
    return TakeCommentMarker(marker, line);
}

/// The system writes one line into each block.
bool RegionScan::TakeBlockMarker(Marker marker) {
    const std::size_t begin = m_blocks.OpenedAt();
    const RegionStep step = m_blocks.Take(marker, m_number);
    return step == RegionStep::Begin || (step == RegionStep::End && m_number == begin + 2);
}

bool RegionScan::TakeCommentMarker(Marker marker, std::string_view line) {
    if (m_noticeTexts == nullptr || m_blocks.IsInside()) return true;
    switch (m_notices.Take(marker)) {
        case RegionStep::Begin:
            m_notice.clear();
            return HasNothingBehind(line, marker);
        case RegionStep::End:
            return HasNothingBehind(line, marker) && IsNoticeWhole();
        default:
            return marker != Marker::Notice;
    }
}

bool RegionScan::IsNoticeWhole() const {
    const std::vector<std::string_view> lines(m_notice.begin(), m_notice.end() - 1);
    return m_noticeTexts->ForeignLine(lines) == lines.size();
}

}  // namespace ZET::Text
