#ifndef ZET_FIRST_LINE_H
#define ZET_FIRST_LINE_H

#include <cstddef>
#include <string_view>

namespace ZET::Text {

/// U+FEFF, by which some programs say at the beginning of a file that it is UTF-8.
inline constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";

/// The first line of a text that is not empty: the notice goes in front of it.
struct FirstLine {
    std::size_t number = 0;  ///< 0: there is none
    std::string_view text;
};

FirstLine FirstLineOf(std::string_view text);

/// Whether a text that begins so is UTF-16, by its mark: no line of it is one of bytes.
bool IsUtf16(std::string_view firstLine);

/// Whether the programs that read a file with such a first line take it for something else, or refuse it,
/// when another line comes first: it names the interpreter or the format, opens a document that knows no
/// comments, or begins with a byte order mark.
bool MustComeFirst(std::string_view line);

}  // namespace ZET::Text

#endif
