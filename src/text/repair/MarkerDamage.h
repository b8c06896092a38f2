#ifndef ZET_MARKER_DAMAGE_H
#define ZET_MARKER_DAMAGE_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "text/NoticeTexts.h"
#include "text/repair/RepairText.h"

namespace ZET::Text {

/// What is wrong with the marker lines of a text, in the order of its lines, and the text with all repaired
/// that can only have been one thing.
struct Diagnosis {
    std::vector<MarkerDamage> damages;
    std::string repaired;
};

/// `hadCarriageReturns` says whether the lines of the file ended with them before the system wrote it, as far
/// as anybody knows.
Diagnosis DiagnoseMarkers(std::string_view text, const NoticeTexts& noticeTexts,
                          std::optional<bool> hadCarriageReturns);

/// The steps of it. Each leaves its repairs settled.
void CheckLineEnds(RepairText& repair, std::optional<bool> hadCarriageReturns);
void CheckHandEdits(RepairText& repair);
void CheckBlocks(RepairText& repair);
void CheckNotices(RepairText& repair, const NoticeTexts& noticeTexts);

/// What the last two do with a marker that follows right after one of its kind. Text that stands behind it is
/// nobody's to drop.
void TakeDoubledBegin(RepairText& repair, std::size_t index);
void TakeDoubledEnd(RepairText& repair, std::size_t index);

}  // namespace ZET::Text

#endif
