#ifndef ZET_LINES_H
#define ZET_LINES_H

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

#include "posix/ByteBlock.h"
#include "posix/ShortText.h"

namespace ZET::Text {

/// What may stand between the words of a line.
inline constexpr std::string_view kBlanks = " \t\v\f\r";

/// Those of them that count where a vertical tab or a form feed is text.
inline constexpr std::string_view kUsualBlanks = " \t\r";

/// What most formats begin a comment with.
inline constexpr std::string_view kCommentStarts = "#;";

struct TextLine {
    std::string_view text;    ///< without the line feed
    bool hasLineFeed = true;  ///< false only for the last line, if at all
};

/// Removes and returns the first line of a non-empty text.
inline TextLine TakeLine(std::string_view& text) {
    const std::size_t length = std::min(FindNear(text, '\n'), text.size());
    const TextLine line{text.substr(0, length), length < text.size()};
    text.remove_prefix(length + (line.hasLineFeed ? 1 : 0));
    return line;
}

/// Removes whole blocks of this size and counts their line feeds. The count of one block fits into a byte, so
/// that the compiler processes many bytes at once.
template <std::size_t kBlock>
std::size_t TakeLineFeeds(std::string_view& text) {
    static_assert(kBlock < 256);
    std::size_t count = 0;
    for (; text.size() >= kBlock; text.remove_prefix(kBlock)) {
        unsigned char inBlock = 0;
        for (std::size_t i = 0; i < kBlock; ++i)
            inBlock = static_cast<unsigned char>(inBlock + (text[i] == '\n' ? 1 : 0));
        count += inBlock;
    }
    return count;
}

inline std::size_t CountLineFeeds(std::string_view text) {
    std::size_t count = TakeLineFeeds<128>(text);
    count += TakeLineFeeds<16>(text);
    return count + TakeLineFeeds<1>(text);
}

/// The number of lines; the last one may lack a line feed.
inline std::size_t CountLines(std::string_view text) {
    return CountLineFeeds(text) + (text.empty() || text.back() == '\n' ? 0 : 1);
}

/// The whole lines before the line with the byte at `position`, with their line feeds.
inline std::string_view LinesBefore(std::string_view text, std::size_t position) {
    if (position >= text.size()) return text;
    return text.substr(0, SizeOfWholeLines(text.substr(0, position)));
}

/// The lines of a text, which must outlive them.
inline std::vector<TextLine> SplitLines(std::string_view text) {
    std::vector<TextLine> lines;
    while (!text.empty())
        lines.push_back(TakeLine(text));
    return lines;
}

/// Removes a trailing carriage return, which belongs to the line end.
inline std::string_view WithoutCarriageReturn(std::string_view line) {
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

}  // namespace ZET::Text

#endif
