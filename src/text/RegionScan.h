#ifndef ZET_REGION_SCAN_H
#define ZET_REGION_SCAN_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "text/NoticeTexts.h"
#include "text/Regions.h"

namespace ZET::Text {

/// A quick look through a text, which may come in pieces of whole lines, for markers that are out of order.
/// What is sound here is so for sure; of anything else, a diagnosis tells.
class RegionScan {
  public:
    /// With the texts of notices, these must be in order too; the texts must outlive the object.
    explicit RegionScan(const NoticeTexts* noticeTexts) : m_noticeTexts(noticeTexts) {}

    void Take(std::string_view lines);

    /// After the last line.
    bool IsSound() const { return m_isSound && !m_blocks.IsInside() && !m_notices.IsInside(); }

    /// The same, and with the texts of notices nothing at all is there that a diagnosis would tell of: what
    /// has damage of any kind has none of these.
    bool IsSpotless() const { return IsSound() && m_isSpotless && m_formerLine == 0; }

    /// Whether there are managed blocks or notices.
    bool HasRegions() const { return m_hasRegions; }

  private:
    class NextDash;

    void PassOver(std::string_view& lines, const char* dash);
    bool TakeWholeBlock(std::string_view& lines, NextDash& dash);
    void TakeLine(std::string_view line);
    void LookForSpots(std::string_view line, Marker marker);
    bool IsInPlace(Marker marker) const;
    bool TakeLineOf(std::string_view line, bool mentionsMarker, Marker marker);
    bool TakeMention(std::string_view line, Marker marker);
    bool TakeBlockMarker(Marker marker);
    bool TakeCommentMarker(Marker marker, std::string_view line);
    bool IsNoticeWhole() const;

    const NoticeTexts* m_noticeTexts;
    bool m_isSound = true;
    bool m_isSpotless = true;
    bool m_hasText = false;        ///< a line that is not empty
    std::size_t m_formerLine = 0;  ///< the number of a kept former line, until its block begins
    bool m_hasRegions = false;
    std::size_t m_number = 0;  ///< of the line, if of lines without a dash in a row no more than two count
    RegionFollower m_blocks = RegionFollower::OfBlocks();
    RegionFollower m_notices = RegionFollower::OfNotices();
    std::vector<std::string> m_notice;  ///< the lines of the one that is open, without its begin marker
};

}  // namespace ZET::Text

#endif
