#ifndef ZET_OWN_REGIONS_H
#define ZET_OWN_REGIONS_H

#include <cstddef>
#include <string_view>

#include "Markers.h"

namespace ZET {

/// Looks for what there is to strip in a text: managed blocks, and notices outside of them. `ManagedText`
/// tells more, and keeps something of each line for it.
class OwnRegions {
  public:
    /// The next line.
    void Take(std::string_view line);

    bool Any() const { return m_block.any || m_notice.any; }

    /// After the last line: where the first region without an end begins, or 0.
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

    Regions m_block{Marker::BlockBegin, Marker::BlockEnd};
    Regions m_notice{Marker::Notice, Marker::CommentEnd};
    std::size_t m_line = 0;
};

}  // namespace ZET

#endif
