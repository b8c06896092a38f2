#ifndef ZET_SECTIONS_H
#define ZET_SECTIONS_H

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "text/Regions.h"

/// Files with lines "[name]" that begin sections.
namespace ZET::Text {

/// The name in a line that begins a section, without the blanks around it; none for any other line.
std::optional<std::string_view> SectionNameOf(std::string_view line);

/// Whether the line is neither empty nor a comment.
bool IsSetting(std::string_view line);

/// Tracks the sections of a text, line by line.
class SectionFollower {
  public:
    struct Heading {
        std::string_view name;
        bool isInBlock = false;  ///< the product wrote it, so that it goes with its block
    };

    /// Takes the next line; returns the heading if it is one.
    std::optional<Heading> Take(std::string_view line);

    /// Whether the last line is in a managed block, including its markers.
    bool IsInBlock() const { return !IsOutside(m_step); }

    /// Whether the last line begins a managed block.
    bool BeginsBlock() const { return m_step == RegionStep::Begin; }

  private:
    RegionFollower m_blocks = RegionFollower::OfBlocks();
    RegionStep m_step = RegionStep::Outside;
};

struct Section {
    std::string_view name;
    std::size_t headingLine = 0;  ///< 0 for the lines before the first section
    bool isInBlock = false;
    std::size_t linesBefore = 0;  ///< the number of lines before `lines`
    std::string_view lines;       ///< without trailing empty lines, and without a comment on the next section
};

/// All sections of a text, which must outlive them. The first has no name and may have no lines.
std::vector<Section> SectionsOf(std::string_view text);

}  // namespace ZET::Text

#endif
