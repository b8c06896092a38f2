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

/// The texts that the module writes between the markers of a notice: in English, in the language that was set
/// when the object was created, and in the shipped languages.
class NoticeTexts {
  public:
    NoticeTexts();

    /// The number of leading lines that are the whole text of a notice; 0 if none is. Carriage returns at
    /// their ends are ignored.
    std::size_t LengthFrom(NoticeLines lines) const;

    /// The same for trailing lines.
    std::size_t LengthBefore(NoticeLines lines) const;

    /// The most lines that such a text has.
    std::size_t MostLines() const;

    /// The index of the first line between a notice's markers that the module did not write; the number of
    /// lines if it wrote them all. If no line is known, the notice is taken to be in another language, in
    /// which any comment line may be the module's.
    std::size_t ForeignLine(NoticeLines notice) const;

    /// The template that a notice tells the user to edit; empty if it names none.
    std::string TemplateIn(NoticeLines notice) const;

  private:
    using Lines = std::vector<std::string>;

    void Add(std::string_view text);
    bool HasLine(std::string_view line) const;

    std::vector<Lines> m_texts;
};

/// Replaces the program in the notice's command by `other`; none if the notice does not name `program`.
std::optional<std::string> WithCommandOf(std::string text, std::string_view program, std::string_view other);

}  // namespace ZET::Text

#endif
