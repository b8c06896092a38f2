#ifndef ZET_POSIX_PRINTABLE_H
#define ZET_POSIX_PRINTABLE_H

#include <cstddef>
#include <string>
#include <string_view>

namespace ZET {

/// The size of the UTF-8 character at `position`; 0 if there is no valid one.
inline std::size_t CharacterAt(std::string_view text, std::size_t position) {
    const auto byteAt = [&](std::size_t i) {
        return position + i < text.size() ? static_cast<unsigned char>(text[position + i]) : 0U;
    };
    const unsigned first = byteAt(0);
    if (first < 0x80) return 1;
    const std::size_t size = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    // Rejects overlong forms, surrogates and values beyond the last character.
    const unsigned second = byteAt(1);
    if (first < 0xC2 || first > 0xF4 || (first == 0xE0 && second < 0xA0) ||
        (first == 0xED && second > 0x9F) || (first == 0xF0 && second < 0x90) ||
        (first == 0xF4 && second > 0x8F))
        return 0;
    for (std::size_t i = 1; i < size; ++i)
        if ((byteAt(i) & 0xC0) != 0x80) return 0;
    return size;
}

/// Whether the character changes the direction of the text behind it, so that a name looks like another one.
/// In UTF-8, these characters form two ranges.
inline bool TurnsDirection(std::string_view character) {
    return (character >= "\xe2\x80\xaa" && character <= "\xe2\x80\xae") ||
           (character >= "\xe2\x81\xa6" && character <= "\xe2\x81\xa9");
}

/// The size of what a terminal may obey as a command at `position`; 0 if there is none. A byte that is not
/// part of a character may be a command to a terminal with another encoding.
inline std::size_t ControlCharacterAt(std::string_view text, std::size_t position) {
    const auto byte = static_cast<unsigned char>(text[position]);
    if (byte < 0x20 || byte == 0x7F || CharacterAt(text, position) == 0) return 1;
    // Control characters beyond ASCII, which some terminals also obey.
    if (byte == 0xC2) return static_cast<unsigned char>(text[position + 1]) <= 0x9F ? 2 : 0;
    return TurnsDirection(text.substr(position, 3)) ? 3 : 0;
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

/// `text` as a single line without commands for a terminal: control characters, and bytes that are not part
/// of a character, become escape sequences such as "\n" or "\x1b".
inline std::string Printable(std::string_view text) {
    const auto isPlain = [](char byte) { return byte >= 0x20 && byte < 0x7F; };
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t begin = i;
        while (i < text.size() && isPlain(text[i]))
            ++i;
        result += text.substr(begin, i - begin);
        if (i == text.size()) break;
        std::size_t control = ControlCharacterAt(text, i);
        if (control == 0) {
            const std::size_t size = CharacterAt(text, i);
            result += text.substr(i, size);
            i += size;
        }
        for (; control > 0; control--)
            result += EscapeOf(static_cast<unsigned char>(text[i++]));
    }
    return result;
}

}  // namespace ZET

#endif
