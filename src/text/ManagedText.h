#ifndef ZET_MANAGED_TEXT_H
#define ZET_MANAGED_TEXT_H

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "text/Regions.h"

namespace ZET::Text {

/// Lines that belong together, numbered from 1. Every line is in exactly one region.
struct ManagedRegion {
    RegionKind kind = RegionKind::Ordinary;
    bool isClosed = true;  ///< false if it has no end marker and reaches to the end of the text
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    std::uint32_t formerLine = 0;  ///< for a block: the number of the kept former line before it, or 0
    std::uint32_t block = 0;       ///< for a kept former line: the first line of its block, or 0

    bool IsWholeNotice() const { return kind == RegionKind::Notice && isClosed; }
};

struct ManagedLine {
    std::string_view text;     ///< without the line feed
    std::uint32_t region = 0;  ///< index of its region
    RegionStep step = RegionStep::Outside;

    /// Whether it is inside its region, also as a marker without effect there.
    bool IsContent() const { return step == RegionStep::Inside || step == RegionStep::NestedBegin; }
};

/// A managed file's text as the module sees it when it removes its own lines. The text must outlive the
/// object and have fewer than 2^32 lines.
class ManagedText {
  public:
    explicit ManagedText(std::string_view text);

    const std::vector<ManagedRegion>& Regions() const { return m_regions; }
    std::size_t LineCount() const { return m_lines.size(); }

    /// `number` is from 1 to `LineCount()`.
    const ManagedLine& Line(std::size_t number) const { return m_lines.at(number - 1); }
    const ManagedRegion& RegionOf(std::size_t number) const { return m_regions[Line(number).region]; }

    /// The text kept in a former line.
    std::string_view FormerText(std::size_t number) const;

  private:
    void AddLine(std::string_view text, const RegionPlace& place);
    void LinkFormerLines();

    std::vector<ManagedLine> m_lines;
    std::vector<ManagedRegion> m_regions;
};

}  // namespace ZET::Text

#endif
