#ifndef ZET_POSIX_PRINTABLE_H
#define ZET_POSIX_PRINTABLE_H

#include <cstddef>
#include <string>
#include <string_view>

namespace ZET {

/// Whether a terminal takes the character at `position` for a command: the size of the character then, else
/// 0.
inline std::size_t ControlCharacterAt(std::string_view text, std::size_t position) {
    const auto byte = static_cast<unsigned char>(text[position]);
    if (byte < 0x20 || byte == 0x7F) return 1;
    // The control characters beyond ASCII, in UTF-8: some terminals obey them as well.
    if (byte != 0xC2 || position + 1 >= text.size()) return 0;
    const auto next = static_cast<unsigned char>(text[position + 1]);
    return next >= 0x80 && next <= 0x9F ? 2 : 0;
}

/// "\n" or "\x1b".
inline std::string EscapeOf(unsigned char byte) {
    constexpr char kDigits[] = "0123456789abcdef";
    switch (byte) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            return {'\\', 'x', kDigits[byte / 16], kDigits[byte % 16]};
    }
}

/// `text` on one line that no terminal obeys: each control character as an escape sequence such as "\n" or
/// "\x1b", everything else as it is.
inline std::string Printable(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        std::size_t control = ControlCharacterAt(text, i);
        if (control == 0) result += text[i++];
        for (; control > 0; control--)
            result += EscapeOf(static_cast<unsigned char>(text[i++]));
    }
    return result;
}

}  // namespace ZET

#endif
