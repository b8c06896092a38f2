#ifndef ZET_OWN_REGIONS_H
#define ZET_OWN_REGIONS_H

#include <cstddef>
#include <string>
#include <string_view>

#include "Markers.h"

namespace ZET {

/// Looks for what there is to strip in a text: managed blocks, and notices outside of them. `ManagedText`
/// tells more, and takes a text apart line by line for it; this takes the text in pieces and keeps none.
class OwnRegions {
  public:
    /// The next piece of the text.
    void Take(std::string_view piece);

    /// After the last piece.
    void End();

    bool Any() const { return m_block.any || m_notice.any; }

    /// Where the first region without an end begins, or 0.
    std::size_t OpenLine() const;
    bool IsBlockOpen() const { return OpenLine() != 0 && OpenLine() == m_block.openLine; }

  private:
    /// The regions between two markers.
    struct Regions {
        void Take(Marker marker, std::size_t line);

        Marker begin;
        Marker end;
        bool any = false;
        std::size_t openLine = 0;  ///< 0: outside
    };

    void TakeLine(std::string_view start);

    Regions m_block{Marker::BlockBegin, Marker::BlockEnd};
    Regions m_notice{Marker::Notice, Marker::CommentEnd};
    std::size_t m_line = 0;
    std::string m_start;  ///< of a line that the last piece did not end, as much as a marker can be
};

}  // namespace ZET

#endif
