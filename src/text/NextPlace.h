#ifndef ZET_NEXT_PLACE_H
#define ZET_NEXT_PLACE_H

#include <algorithm>
#include <string_view>

#include "posix/ByteBlock.h"

namespace ZET::Text {

/// The next occurrence of some bytes in a text that is read line by line.
class NextPlace {
  public:
    NextPlace(std::string_view text, std::string_view what) : m_what(what) { Find(text); }

    /// The next occurrence in the rest of the text; its end if there is none.
    const char* In(std::string_view rest) {
        if (m_place < rest.data()) Find(rest);
        return m_place;
    }

  private:
    void Find(std::string_view rest) {
        m_place = rest.data() + std::min(FindBytes(rest, m_what), rest.size());
    }

    std::string_view m_what;
    const char* m_place = nullptr;
};

}  // namespace ZET::Text

#endif
