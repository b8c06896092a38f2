#include "text/RegionScan.h"

#include <array>
#include <cstring>
#include <utility>

#include "text/Lines.h"
#include "text/NextPlace.h"
#include "text/repair/NearMarker.h"
#include "zet/ZETFormat.h"

namespace ZET::Text {

namespace {

/// More lines than a notice has in any language.
constexpr std::size_t kMostLinesOfNotice = 100;

/// Dashes and other characters that an edit by hand may leave around a marker; a byte of a multibyte
/// character may be either.
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

/// A cheap test that is true for every near marker.
bool CanBeNearMarker(std::string_view line) {
    return BeginsWithDash(line.begin(), line.end()) || BeginsWithDash(line.rbegin(), line.rend());
}

bool HasNothingBehind(std::string_view line, Marker marker) {
    return line.find_first_not_of(" \t\r", MarkerText(marker).size()) == std::string_view::npos;
}

/// The first bytes of all dashes that a marker may have; the second is that of dashes that a text processor
/// produced.
constexpr std::string_view kDash = "-";
constexpr std::string_view kOtherDash = "\xe2";

/// Removes these bytes from the front; true if they were there. The size is known at compile time, so no
/// function is called.
template <std::size_t kSize>
bool TakeStart(std::string_view& lines, const char (&start)[kSize]) {
    constexpr std::size_t kLength = kSize - 1;
    if (lines.size() < kLength || std::memcmp(lines.data(), start, kLength) != 0) return false;
    lines.remove_prefix(kLength);
    return true;
}

}  // namespace

/// Finds the next place at which a line may have a dash.
class RegionScan::NextDash {
  public:
    explicit NextDash(std::string_view text) : m_dash(text, kDash), m_other(text, kOtherDash) {}

    const char* In(std::string_view rest) { return std::min(m_dash.In(rest), m_other.In(rest)); }

    /// Removes the next line if it has a line feed and no dash before it.
    bool TakeLineWithout(std::string_view& rest) {
        const char* const dash = In(rest);
        const std::size_t length = FindNear(rest, '\n');
        if (length == std::string_view::npos || dash < rest.data() + length) return false;
        rest.remove_prefix(length + 1);
        return true;
    }

  private:
    NextPlace m_dash;
    NextPlace m_other;
};

/// Skips lines without a dash, as most are. Their number matters only to lines that must directly precede a
/// block or be alone in it.
void RegionScan::PassOver(std::string_view& lines, const char* dash) {
    const std::string_view others = LinesBefore(lines, static_cast<std::size_t>(dash - lines.data()));
    if (others.empty()) return;
    m_number += std::min(FindNear(others, '\n'), others.size() - 1) + 1 == others.size() ? 1 : 2;
    m_hasText = m_hasText || others.find_first_not_of('\n') != std::string_view::npos;
    lines.remove_prefix(others.size());
}

/// Skips a block in the form that the system writes, with the former line before it, if any. In a text of
/// many blocks, three quarters of what taking its lines one by one takes.
bool RegionScan::TakeWholeBlock(std::string_view& lines, NextDash& dash) {
    if (m_blocks.IsInside() || m_formerLine != 0) return false;
    std::string_view rest = lines;
    if (TakeStart(rest, ZETFormerLinePrefix) && !dash.TakeLineWithout(rest)) return false;
    if (!TakeStart(rest, ZETBeginMarker) || !TakeStart(rest, "\n") || !dash.TakeLineWithout(rest))
        return false;
    if (!TakeStart(rest, ZETEndMarker) || !TakeStart(rest, "\n")) return false;
    lines = rest;
    m_hasRegions = true;
    m_hasText = true;
    return true;
}

void RegionScan::Take(std::string_view lines) {
    NextDash dash(lines);
    while (!lines.empty()) {
        if (!m_notices.IsInside()) {
            if (!lines.starts_with(kMarkerStart)) PassOver(lines, dash.In(lines));
            if (lines.empty() || TakeWholeBlock(lines, dash)) continue;
        }
        TakeLine(Text::TakeLine(lines).text);
    }
}

void RegionScan::TakeLine(std::string_view line) {
    ++m_number;
    const Marker marker = MarkerOf(line);
    const bool mentionsMarker = marker != Marker::None || line.find(kMarkerStart) != std::string_view::npos;
    LookForSpots(line, marker);
    m_isSound = m_isSound && TakeLineOf(line, mentionsMarker, marker);
    m_hasRegions = m_hasRegions || marker == Marker::BlockBegin || marker == Marker::Notice;
}

/// Checks that a kept former line directly precedes its block, that the notice is above everything else, and
/// that a marker is alone in its line.
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

/// The system writes exactly one line into each block.
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
