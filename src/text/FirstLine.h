#ifndef ZET_FIRST_LINE_H
#define ZET_FIRST_LINE_H

#include <cstddef>
#include <string_view>

namespace ZET::Text {

/// U+FEFF, with which some programs mark at the beginning of a file that it is UTF-8.
inline constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";

/// The first non-empty line of a text; the notice goes before it.
struct FirstLine {
    std::size_t number = 0;  ///< 0 if there is none
    std::string_view text;
};

FirstLine FirstLineOf(std::string_view text);

/// Whether the text that begins with this line is UTF-16, as its byte order mark says: its lines are no lines
/// of bytes.
bool IsUtf16(std::string_view firstLine);

/// Whether programs would misinterpret or refuse a file if another line came before this one: it names the
/// interpreter or the format, opens a document without comments, or begins with a byte order mark.
bool MustComeFirst(std::string_view line);

}  // namespace ZET::Text

#endif
