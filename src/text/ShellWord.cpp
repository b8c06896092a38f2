#include "text/ShellWord.h"

#include "posix/Printable.h"
#include "text/ShownWords.h"

namespace ZET::Text {

namespace {

bool NeedsQuotes(std::string_view word) {
    constexpr std::string_view kPlain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_@%+=:,./-";
    if (word.empty()) return true;
    return word.find_first_not_of(kPlain) != std::string_view::npos;
}

/// In the quotes in which a shell reads the escapes of what cannot be shown.
std::string WithEscapes(std::string_view word) {
    std::string escaped;
    for (const char c : word)
        escaped += (c == '\\' || c == '\'' ? "\\" : "") + std::string(1, c);
    return "$'" + Printable(escaped) + "'";
}

}  // namespace

std::string ShellWord(std::string_view word) {
    if (!NeedsQuotes(word)) return std::string(word);
    if (Printable(word) != word) return WithEscapes(word);
    std::string quoted = "'";
    for (const char c : word)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

std::string ShellWordOrHidden(std::string_view word) {
    constexpr std::string_view kHidden = kHiddenWord;
    if (!word.ends_with(kHidden)) return ShellWord(word);
    const std::string_view shown = word.substr(0, word.size() - kHidden.size());
    return NeedsQuotes(shown) && !shown.empty() ? ShellWord(word) : std::string(word);
}

std::string ShellPath(std::string_view path) {
    return ShellWord((path.starts_with('-') ? "./" : "") + std::string(path));
}

}  // namespace ZET::Text
