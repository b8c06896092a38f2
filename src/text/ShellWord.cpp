#include "text/ShellWord.h"

namespace ZET::Text {

namespace {

bool NeedsQuotes(std::string_view word) {
    constexpr std::string_view kPlain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_@%+=:,./-*";
    return word.empty() || word.find_first_not_of(kPlain) != std::string_view::npos;
}

}  // namespace

std::string ShellWord(std::string_view word) {
    if (!NeedsQuotes(word)) return std::string(word);
    std::string quoted = "'";
    for (const char c : word)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

}  // namespace ZET::Text
