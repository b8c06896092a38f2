#ifndef ZET_REGION_TRACKER_H
#define ZET_REGION_TRACKER_H

#include <string_view>

#include "Text.h"

namespace ZET {

/// Follows the regions of a text from a line that begins with one marker to the next that begins with
/// another, and warns of a begin inside a region.
class RegionTracker {
  public:
    enum class Line { Ordinary, Begin, End, StrayEnd };

    /// Warnings are logged in the name of the operation `function`.
    RegionTracker(Text& text, const char* function, std::string_view beginMarker, std::string_view endMarker)
        : m_text(text), m_function(function), m_beginMarker(beginMarker), m_endMarker(endMarker) {}

    /// Takes in the line of the text that was read last. A line that begins with both markers is a begin.
    Line Track(std::string_view line);

    bool IsInside() const { return m_inside; }

    /// Logs that the line read last begins with an end marker and no region was open.
    void WarnOfStrayEnd() const { Warn(m_endMarker); }

  private:
    void Warn(std::string_view marker) const;

    Text& m_text;
    const char* m_function;
    std::string_view m_beginMarker;
    std::string_view m_endMarker;
    bool m_inside = false;
};

}  // namespace ZET

#endif
