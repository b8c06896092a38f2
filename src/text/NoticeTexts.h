#ifndef ZET_NOTICE_TEXTS_H
#define ZET_NOTICE_TEXTS_H

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ZET::Text {

using NoticeLines = std::span<const std::string_view>;

/// What the module writes between the markers of a notice: its texts as they are, and in the language that
/// was set when the object was made.
class NoticeTexts {
  public:
    NoticeTexts();

    /// How many of the first of these lines are the whole text of a notice; 0 when none is. Carriage returns
    /// at their ends do not count.
    std::size_t LengthFrom(NoticeLines lines) const;

    /// The same for the last ones.
    std::size_t LengthBefore(NoticeLines lines) const;

    /// How many lines that can take at most.
    std::size_t MostLines() const;

    /// The first of the lines between the markers of a notice that the module did not write; their number
    /// when it wrote all. A text of which no line is known is one in another language, and may be any
    /// comment.
    std::size_t ForeignLine(NoticeLines notice) const;

    /// The template that a notice tells its reader to edit; empty when it names none.
    std::string TemplateIn(NoticeLines notice) const;

  private:
    using Lines = std::vector<std::string>;

    void Add(std::string_view text);
    bool HasLine(std::string_view line) const;

    std::vector<Lines> m_texts;
};

/// The text with the command of another program in its notice; none where that names another one already.
std::optional<std::string> WithCommandOf(std::string text, std::string_view program, std::string_view other);

}  // namespace ZET::Text

#endif
