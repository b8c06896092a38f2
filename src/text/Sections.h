#ifndef ZET_SECTIONS_H
#define ZET_SECTIONS_H

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "text/Regions.h"

/// Files whose lines "[name]" say what the lines below them are about.
namespace ZET::Text {

/// The name in a line that begins a section, without the blanks around it; none: the line is another one.
std::optional<std::string_view> SectionNameOf(std::string_view line);

/// Follows a text through its sections, line by line.
class SectionFollower {
  public:
    struct Heading {
        std::string_view name;
        bool isInBlock = false;  ///< the product wrote it: what it names comes and goes with the block
    };

    /// What the next line begins.
    std::optional<Heading> Take(std::string_view line);

    /// Whether the line that was taken last stands in a managed block, the markers included.
    bool IsInBlock() const { return !IsOutside(m_step); }

    /// Whether it begins one.
    bool BeginsBlock() const { return m_step == RegionStep::Begin; }

  private:
    RegionFollower m_blocks = RegionFollower::OfBlocks();
    RegionStep m_step = RegionStep::Outside;
};

struct Section {
    std::string_view name;
    std::size_t headingLine = 0;  ///< 0: the lines before the first section
    bool isInBlock = false;
    std::size_t linesBefore = 0;  ///< of the text
    std::string_view lines;       ///< the empty ones behind them, and a comment on the next section, left out
};

/// All of a text, which must outlive them; the first has no name, and may have no lines either.
std::vector<Section> SectionsOf(std::string_view text);

}  // namespace ZET::Text

#endif
