#ifndef ZET_LINE_ENDS_H
#define ZET_LINE_ENDS_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "text/Regions.h"

namespace ZET::Text {

/// How the lines of a file end. Those that the system wrote to keep order, and into its blocks, do not count:
/// it writes line feeds alone.
struct LineEnds {
    bool areCarriageReturns = false;  ///< all of them have one before the line feed
    std::size_t otherLine = 0;        ///< the first line that ends other than those before it; 0: none
    bool isOtherCarriageReturn = false;
};

LineEnds LineEndsOf(std::string_view text);

/// The same for a text that comes in pieces of whole lines.
class LineEndScan {
  public:
    /// `before` is how many lines came before these.
    void Take(std::string_view lines, std::size_t before);
    LineEnds End();

  private:
    void FollowMarkers(std::string_view lines);
    void TakeLine(std::string_view line, std::size_t number);
    void Count(bool isCarriageReturn, std::size_t number);

    LineEnds m_ends;
    std::optional<bool> m_isFirstCarriageReturn;
    Regions m_regions;
    std::size_t m_emptyLine = 0;  ///< that may be the one before a block that was appended
};

/// A line that is to be set, with the end of the others but for its line feed.
std::string WithLineEnd(const std::string& line, const LineEnds& ends);

/// A line that was looked up, without what belongs to its end.
std::string WithoutLineEnd(std::string line);

}  // namespace ZET::Text

#endif
