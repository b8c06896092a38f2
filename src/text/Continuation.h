#ifndef ZET_CONTINUATION_H
#define ZET_CONTINUATION_H

#include <string_view>

namespace ZET::Text {

/// Whether the line goes on in the next one, as many formats have it: it ends with an odd number of "\". A
/// comment does not.
bool GoesOn(std::string_view line);

/// Whether it goes on in `next` beyond doubt: the "\" stands behind a blank, and is no value of its own, or
/// `next` alone is indented. A path may end with a "\", too.
bool SurelyGoesOn(std::string_view line, std::string_view next);

/// The last line of the text, without its line feed.
std::string_view LastLineOf(std::string_view text);

}  // namespace ZET::Text

#endif
