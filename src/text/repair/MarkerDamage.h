#ifndef ZET_MARKER_DAMAGE_H
#define ZET_MARKER_DAMAGE_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "text/NoticeTexts.h"
#include "text/repair/RepairText.h"

namespace ZET::Text {

/// The damage to the marker lines of a text, in the order of its lines, and the text with every unambiguous
/// repair made.
struct Diagnosis {
    std::vector<MarkerDamage> damages;
    std::string repaired;
};

/// `hadCarriageReturns` tells whether the lines ended with them before the system wrote the file; none if
/// unknown.
Diagnosis DiagnoseMarkers(std::string_view text, const NoticeTexts& noticeTexts,
                          std::optional<bool> hadCarriageReturns);

/// In the place of a line's index.
inline constexpr std::size_t kNoLine = static_cast<std::size_t>(-1);

/// The steps of `DiagnoseMarkers`. Each settles its repairs.
void CheckLineEnds(RepairText& repair, std::optional<bool> hadCarriageReturns);
void CheckHandEdits(RepairText& repair);
void CheckBlocks(RepairText& repair);
void CheckNotices(RepairText& repair, const NoticeTexts& noticeTexts);

/// Used by the last two steps for a marker that directly follows one of its kind. Text after it is never
/// dropped.
void TakeDoubledBegin(RepairText& repair, std::size_t index);
void TakeDoubledEnd(RepairText& repair, std::size_t index);

}  // namespace ZET::Text

#endif
