#ifndef ZET_OWN_REGIONS_H
#define ZET_OWN_REGIONS_H

#include <cstddef>
#include <string>
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

    /// After the last line: what is wrong with the first region that lost its end, or nothing.
    std::string LostEnd() const;

  private:
    /// The regions between two markers.
    struct Regions {
        void Take(Marker marker, std::size_t line);

        const char* name;
        Marker begin;
        Marker end;
        bool any = false;
        std::size_t openLine = 0;     ///< 0: outside
        std::size_t lostEndLine = 0;  ///< where the first one begins that has another one in it; 0: none
        std::size_t nextLine = 0;     ///< where that other one begins
    };

    Regions m_block{"managed block", Marker::BlockBegin, Marker::BlockEnd};
    Regions m_notice{"notice", Marker::Notice, Marker::CommentEnd};
    std::size_t m_line = 0;
};

/// What is wrong with a region that lost its end, and the remedy. Another one begins in the line `next` in
/// it; 0: it reaches to the end of the text.
std::string LostEndOf(const std::string& region, std::size_t line, std::size_t next);

}  // namespace ZET

#endif
