#ifndef ZET_MANAGED_TEXT_H
#define ZET_MANAGED_TEXT_H

#include <cstddef>
#include <string_view>
#include <vector>

#include "text/Markers.h"

namespace ZET {

/// What a line of a managed file is.
enum class LineKind {
    Ordinary,  ///< also an end marker that closes nothing: the module keeps it as it is
    FormerLine,
    BlockBegin,
    BlockContent,  ///< also a marker that stands inside a block
    BlockEnd,
    NoticeBegin,
    NoticeText,
    NoticeEnd,
    TemplateCommentBegin,
    TemplateCommentText,
    TemplateCommentEnd
};

enum class RegionKind { Ordinary, FormerLine, Block, Notice, TemplateComment };

/// Lines that belong together, numbers from 1. Every line is in exactly one region.
struct ManagedRegion {
    RegionKind kind = RegionKind::Ordinary;
    std::size_t first = 0;
    std::size_t last = 0;
    bool isClosed = true;        ///< false: it has no end marker, and reaches to the end of the text
    std::size_t formerLine = 0;  ///< of a block: the number of the kept former line before it, or 0
    std::size_t block = 0;       ///< of a kept former line: the number of the first line of its block, or 0
};

struct ManagedLine {
    std::string_view text;  ///< without the line feed
    LineKind kind = LineKind::Ordinary;
    bool isClosed = true;    ///< false: of a region without an end marker
    std::size_t region = 0;  ///< index
};

/// A managed file's text as the module sees it when it takes its own lines out: managed blocks first, then
/// notices in what is left, and then, for a template, its comments. The text must outlive the object.
class ManagedText {
  public:
    explicit ManagedText(std::string_view text);

    const std::vector<ManagedRegion>& Regions() const { return m_regions; }
    std::size_t LineCount() const { return m_lines.size(); }

    /// `number` is from 1 to `LineCount()`.
    const ManagedLine& Line(std::size_t number) const { return m_lines.at(number - 1); }
    const ManagedRegion& RegionOf(std::size_t number) const { return m_regions[Line(number).region]; }

    /// The text that a kept former line keeps.
    std::string_view FormerText(std::size_t number) const;

  private:
    struct Bounds;

    void MarkRegions(const Bounds& bounds);
    void MarkFormerLines();
    void JoinRegions();
    void LinkFormerLines();

    std::vector<ManagedLine> m_lines;
    std::vector<ManagedRegion> m_regions;
};

}  // namespace ZET

#endif
