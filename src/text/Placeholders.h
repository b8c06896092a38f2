#ifndef ZET_PLACEHOLDERS_H
#define ZET_PLACEHOLDERS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "posix/ByteBlock.h"
#include "posix/ShortText.h"

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

/// The same in a text that has many, one after the other.
class PlaceholderWalk {
  public:
    explicit PlaceholderWalk(std::string_view text) : m_text(text), m_dollar(m_dollars.Next(text)) {}

    /// The first one from there on, which is not before where any that was asked for began.
    PlaceholderRange NextFrom(std::size_t from) {
        while (m_dollar < from || (m_dollar != std::string_view::npos && !IsBegin(m_dollar)))
            m_dollar = m_dollars.Next(m_text);
        if (m_dollar == std::string_view::npos) return {};
        if (m_end <= m_dollar) m_end = EndBehind(m_dollar);
        return {m_dollar, m_end};
    }

  private:
    bool IsBegin(std::size_t dollar) const { return dollar + 1 < m_text.size() && m_text[dollar + 1] == '{'; }

    std::size_t EndBehind(std::size_t dollar) const {
        const std::size_t brace = FindNear(m_text.substr(dollar), '}');
        return brace == std::string_view::npos ? brace : dollar + brace + 1;
    }

    std::string_view m_text;
    BytePlaces m_dollars{'$'};
    std::size_t m_dollar;
    std::size_t m_end = 0;  ///< behind the first "}" that follows a placeholder's begin; npos: there is none
};

/// The placeholders of a template's line that are replaced, in their order, each once.
std::vector<std::string> PlaceholdersOf(std::string_view templateLine);

/// What is put before a text that is taken for a line, though it is none: one that begins like a comment
/// would have no placeholders.
inline constexpr std::string_view kLineGuard = "=";

/// The placeholders of a value, which may begin like a comment.
std::vector<std::string> PlaceholdersOfValue(std::string_view value);

/// What stands before, between and behind the placeholders of a template's line that are replaced.
std::vector<std::string_view> PiecesBetweenPlaceholders(std::string_view templateLine);

}  // namespace ZET::Text

#endif
