#ifndef ZET_REGION_TRACKER_H
#define ZET_REGION_TRACKER_H

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "TextReader.h"

namespace ZET {

/// Tracks regions from a line that begins with one marker to the next line that begins with another, and
/// warns of a begin marker inside a region.
class RegionTracker {
  public:
    enum class Line { Ordinary, Begin, End, StrayEnd };

    /// `function` is the operation that warnings name.
    RegionTracker(TextReader& text, const char* function, std::string_view beginMarker,
                  std::string_view endMarker)
        : m_text(text),
          m_function(function),
          m_beginMarker(beginMarker),
          m_endMarker(endMarker),
          m_shortest(std::min(beginMarker.size(), endMarker.size())) {}

    /// Takes the line that was read last. A line that begins with both markers counts as a begin.
    Line Track(std::string_view line) {
        // Most lines differ from both markers in their first byte.
        const bool mayBeMarker =
            line.size() >= m_shortest &&
            (m_shortest == 0 || line.front() == m_beginMarker.front() || line.front() == m_endMarker.front());
        return mayBeMarker ? TrackMarker(line) : Line::Ordinary;
    }

    bool IsInside() const { return m_inside; }

    /// Warns that the line read last begins with an end marker although no region was open.
    void WarnOfStrayEnd() const { Warn(m_endMarker); }

  private:
    Line TrackMarker(std::string_view line);
    void Warn(std::string_view marker) const;

    TextReader& m_text;
    const char* m_function;
    std::string_view m_beginMarker;
    std::string_view m_endMarker;
    std::size_t m_shortest;
    bool m_inside = false;
};

}  // namespace ZET

#endif
