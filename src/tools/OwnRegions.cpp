#include "OwnRegions.h"

#include <algorithm>

#include "Markers.h"

namespace ZET {

namespace {

/// Follows the regions between two markers.
class Tracker {
  public:
    Tracker(Marker begin, Marker end) : m_begin(begin), m_end(end) {}

    /// Takes in a line that begins with this marker.
    void Take(Marker marker, std::size_t line) {
        if (m_openLine != 0) {
            if (marker == m_end) m_openLine = 0;
        } else if (marker == m_begin) {
            m_openLine = line;
            m_any = true;
        }
    }

    bool Any() const { return m_any; }
    std::size_t OpenLine() const { return m_openLine; }

  private:
    Marker m_begin;
    Marker m_end;
    bool m_any = false;
    std::size_t m_openLine = 0;  ///< 0: outside
};

}  // namespace

OwnRegions FindOwnRegions(std::string_view text) {
    Tracker block(Marker::BlockBegin, Marker::BlockEnd);
    Tracker notice(Marker::Notice, Marker::CommentEnd);
    for (std::size_t number = 1; !text.empty(); ++number) {
        if (text.front() == '#') {
            const Marker marker = MarkerOf(text);
            const bool wasInside = block.OpenLine() != 0;
            block.Take(marker, number);
            // Blocks go first; what they hold is not there any more when the notices go.
            if (!wasInside && block.OpenLine() == 0) notice.Take(marker, number);
        }
        text.remove_prefix(std::min(text.find('\n'), text.size() - 1) + 1);
    }
    OwnRegions result;
    result.any = block.Any() || notice.Any();
    result.openLine = block.OpenLine() != 0 && notice.OpenLine() != 0
                          ? std::min(block.OpenLine(), notice.OpenLine())
                          : std::max(block.OpenLine(), notice.OpenLine());
    result.isBlockOpen = result.openLine != 0 && result.openLine == block.OpenLine();
    return result;
}

}  // namespace ZET
