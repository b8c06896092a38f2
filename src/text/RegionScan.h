#ifndef ZET_REGION_SCAN_H
#define ZET_REGION_SCAN_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "text/NoticeTexts.h"

namespace ZET {

/// A quick look through a text, which may come in pieces of whole lines, for markers that are out of order.
/// What is sound here is so for sure; of anything else, a diagnosis tells.
class RegionScan {
  public:
    /// With the texts of notices, these must be in order too; the texts must outlive the object.
    explicit RegionScan(const NoticeTexts* noticeTexts) : m_noticeTexts(noticeTexts) {}

    void Take(std::string_view lines);

    /// How many there were so far.
    std::size_t LineCount() const { return m_number; }

    /// After the last line.
    bool IsSound() const { return m_isSound && m_blockBegin == 0 && !m_isInNotice; }

    /// Whether there are managed blocks or notices; of a sound text.
    bool HasRegions() const { return m_hasRegions; }

  private:
    bool TakeLine(std::string_view line, bool mentionsMarker);
    bool TakeMention(std::string_view line);
    bool TakeBegin();
    bool TakeEnd();
    bool TakeNoticeBegin(std::string_view line);
    bool TakeCommentEnd(std::string_view line);
    bool KeepOfNotice(std::string_view line);
    bool CountsAsComment() const { return m_noticeTexts != nullptr && m_blockBegin == 0; }

    const NoticeTexts* m_noticeTexts;
    bool m_isSound = true;
    bool m_hasRegions = false;
    std::size_t m_number = 0;
    std::size_t m_blockBegin = 0;  ///< the line; 0: outside
    bool m_isInNotice = false;
    std::vector<std::string> m_notice;  ///< its lines, without the begin marker
};

}  // namespace ZET

#endif
