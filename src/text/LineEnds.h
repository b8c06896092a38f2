#ifndef ZET_LINE_ENDS_H
#define ZET_LINE_ENDS_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "text/Regions.h"

namespace ZET::Text {

/// How the lines of a file end. Lines that the system wrote itself, and those in its blocks, do not count: it
/// writes only line feeds.
struct LineEnds {
    bool areCarriageReturns = false;  ///< all lines have a carriage return before the line feed
    std::size_t otherLine = 0;  ///< the first line that ends differently from those before it; 0 if none
    bool isOtherCarriageReturn = false;
};

LineEnds LineEndsOf(std::string_view text);

/// As `LineEndsOf`, for a text that comes in pieces of whole lines.
class LineEndScan {
  public:
    /// `before` is the number of lines before these.
    void Take(std::string_view lines, std::size_t before);
    LineEnds End();

  private:
    void FollowMarkers(std::string_view lines);
    void TakeLine(std::string_view line, std::size_t number);
    void Count(bool isCarriageReturn, std::size_t number);

    LineEnds m_ends;
    std::optional<bool> m_isFirstCarriageReturn;
    Regions m_regions;
    std::size_t m_emptyLine = 0;  ///< an empty line that may belong to an appended block
};

/// The line to be set, with the file's line end but without the line feed.
std::string WithLineEnd(const std::string& line, const LineEnds& ends);

/// A line that was looked up, without its carriage return.
std::string WithoutLineEnd(std::string line);

}  // namespace ZET::Text

#endif
