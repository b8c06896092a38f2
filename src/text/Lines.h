#ifndef ZET_LINES_H
#define ZET_LINES_H

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

namespace ZET {

struct TextLine {
    std::string_view text;    ///< without the line feed
    bool hasLineFeed = true;  ///< false at most for the last line
};

/// Takes the first line off a text that is not empty.
inline TextLine TakeLine(std::string_view& text) {
    const std::size_t length = std::min(text.find('\n'), text.size());
    const TextLine line{text.substr(0, length), length < text.size()};
    text.remove_prefix(length + (line.hasLineFeed ? 1 : 0));
    return line;
}

/// The lines of a text, which must outlive them.
inline std::vector<TextLine> SplitLines(std::string_view text) {
    std::vector<TextLine> lines;
    while (!text.empty())
        lines.push_back(TakeLine(text));
    return lines;
}

/// A line that ends with a carriage return has it as a part of its end.
inline std::string_view WithoutCarriageReturn(std::string_view line) {
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

}  // namespace ZET

#endif
