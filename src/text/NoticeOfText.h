#ifndef ZET_NOTICE_OF_TEXT_H
#define ZET_NOTICE_OF_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace ZET::Text {

/// A text, separated from the notice at its top.
struct TextAndNotice {
    std::string_view notice;  ///< with its last line feed; empty if there is none
    std::string_view text;
    std::size_t noticeLines = 0;
};

/// The text must outlive the result. A notice that is not closed does not count.
TextAndNotice WithoutNotice(std::string_view text);

}  // namespace ZET::Text

#endif
