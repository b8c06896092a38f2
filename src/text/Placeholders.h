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

/// The position of a placeholder in a line; both are npos if there is none.
struct PlaceholderRange {
    std::size_t begin = std::string_view::npos;
    std::size_t end = std::string_view::npos;  ///< after its "}"; npos if that is missing

    bool IsThere() const { return begin != std::string_view::npos; }
    bool IsClosed() const { return end != std::string_view::npos; }
    std::string_view In(std::string_view line) const { return line.substr(begin, end - begin); }
};

/// The module replaces nothing in a line that begins like a comment.
inline bool HasNoPlaceholders(std::string_view line) {
    return line.starts_with('#');
}

/// The first placeholder at or after `from`, in a line that can have some.
PlaceholderRange NextPlaceholder(std::string_view line, std::size_t from);

/// As `NextPlaceholder`, for finding many placeholders of a text in sequence.
class PlaceholderWalk {
  public:
    explicit PlaceholderWalk(std::string_view text) : m_text(text), m_dollar(m_dollars.Next(text)) {}

    /// The first placeholder at or after `from`, which must not be before the begin of one that was returned
    /// already.
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
    std::size_t m_end = 0;  ///< after the first "}" that follows a placeholder's begin; npos if there is none
};

/// The placeholders of a template line that are replaced, in order, each once.
std::vector<std::string> PlaceholdersOf(std::string_view templateLine);

/// Put before a text that is treated as a line but is none: if it began like a comment, it would have no
/// placeholders.
inline constexpr std::string_view kLineGuard = "=";

/// The placeholders of a value, which may begin like a comment.
std::vector<std::string> PlaceholdersOfValue(std::string_view value);

/// The texts before, between and after the replaced placeholders of a template line.
std::vector<std::string_view> PiecesBetweenPlaceholders(std::string_view templateLine);

}  // namespace ZET::Text

#endif
