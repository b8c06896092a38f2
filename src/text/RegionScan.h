#ifndef ZET_REGION_SCAN_H
#define ZET_REGION_SCAN_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "text/NoticeTexts.h"
#include "text/Regions.h"

namespace ZET::Text {

/// A quick scan of a text, which may come in pieces of whole lines, for markers that are out of order. What
/// it calls sound certainly is; anything else needs a diagnosis.
class RegionScan {
  public:
    /// If `noticeTexts` is given, notices must be in order too. It must outlive the object.
    explicit RegionScan(const NoticeTexts* noticeTexts) : m_noticeTexts(noticeTexts) {}

    void Take(std::string_view lines);

    /// Whether the text is sound; call it after the last line.
    bool IsSound() const { return m_isSound && !m_blocks.IsInside() && !m_notices.IsInside(); }

    /// Whether the text is sound and, if notice texts were given, contains nothing at all that a diagnosis
    /// would report: no damage of any kind.
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
    bool m_hasText = false;        ///< whether there was a non-empty line
    std::size_t m_formerLine = 0;  ///< the number of a kept former line until its block begins
    bool m_hasRegions = false;
    std::size_t m_number = 0;  ///< of the line, where a run of lines without a dash counts as two at most
    RegionFollower m_blocks = RegionFollower::OfBlocks();
    RegionFollower m_notices = RegionFollower::OfNotices();
    std::vector<std::string> m_notice;  ///< the lines of the open notice, without its begin marker
};

}  // namespace ZET::Text

#endif
