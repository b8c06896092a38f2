#ifndef ZET_CHARACTERS_H
#define ZET_CHARACTERS_H

namespace ZET::Core {

/// Of ASCII, whatever the reader's language is.
constexpr bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

}  // namespace ZET::Core

#endif
