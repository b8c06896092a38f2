#include "Printable.h"

#include <cstddef>

namespace ZET {

namespace {

bool IsControl(unsigned char byte) {
    return byte < 0x20 || byte == 0x7F;
}

/// The control characters beyond ASCII, in UTF-8: some terminals obey them as well.
bool IsLateControl(std::string_view text, std::size_t position) {
    if (position + 1 >= text.size() || text[position] != '\xC2') return false;
    const auto next = static_cast<unsigned char>(text[position + 1]);
    return next >= 0x80 && next <= 0x9F;
}

void AppendEscape(std::string& result, unsigned char byte) {
    constexpr char kDigits[] = "0123456789abcdef";
    switch (byte) {
        case '\n':
            result += "\\n";
            return;
        case '\r':
            result += "\\r";
            return;
        case '\t':
            result += "\\t";
            return;
        default:
            result += {'\\', 'x', kDigits[byte / 16], kDigits[byte % 16]};
    }
}

}  // namespace

std::string Printable(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); i++) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (IsControl(byte)) {
            AppendEscape(result, byte);
        } else if (IsLateControl(text, i)) {
            AppendEscape(result, byte);
            AppendEscape(result, static_cast<unsigned char>(text[++i]));
        } else {
            result += text[i];
        }
    }
    return result;
}

}  // namespace ZET
