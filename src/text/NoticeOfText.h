#ifndef ZET_NOTICE_OF_TEXT_H
#define ZET_NOTICE_OF_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace ZET::Text {

/// A text and the notice at its top, apart.
struct TextAndNotice {
    std::string_view notice;  ///< with its last line feed; empty: the text begins with none
    std::string_view text;
    std::size_t noticeLines = 0;
};

/// The text must outlive the result. A notice that is not closed is none.
TextAndNotice WithoutNotice(std::string_view text);

}  // namespace ZET::Text

#endif
