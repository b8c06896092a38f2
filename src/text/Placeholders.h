#ifndef ZET_PLACEHOLDERS_H
#define ZET_PLACEHOLDERS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ZET::Text {

inline constexpr std::string_view kPlaceholderBegin = "${";

/// Where a placeholder stands in a line; both are npos when there is none.
struct PlaceholderRange {
    std::size_t begin = std::string_view::npos;
    std::size_t end = std::string_view::npos;  ///< behind its "}"; npos when that is missing

    bool IsThere() const { return begin != std::string_view::npos; }
    bool IsClosed() const { return end != std::string_view::npos; }
    std::string_view In(std::string_view line) const { return line.substr(begin, end - begin); }
};

/// The module substitutes nothing in a line that begins like a comment.
inline bool HasNoPlaceholders(std::string_view line) {
    return line.starts_with('#');
}

/// The first one from there on, in a line that can have some.
PlaceholderRange NextPlaceholder(std::string_view line, std::size_t from);

/// The placeholders of a template's line that are replaced, in their order, each once.
std::vector<std::string> PlaceholdersOf(std::string_view templateLine);

/// What stands before, between and behind the placeholders of a template's line that are replaced.
std::vector<std::string_view> PiecesBetweenPlaceholders(std::string_view templateLine);

}  // namespace ZET::Text

#endif
