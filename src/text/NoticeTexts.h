#ifndef ZET_NOTICE_TEXTS_H
#define ZET_NOTICE_TEXTS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ZET {

/// What the module writes between the markers of a notice: its texts as they are, and in the language that
/// was set when the object was made.
class NoticeTexts {
  public:
    NoticeTexts();

    /// How many of the lines from `first` on are the whole text of a notice; 0 when none is. Carriage returns
    /// at their ends do not count.
    std::size_t LengthFrom(const std::vector<std::string_view>& lines, std::size_t first) const;

    /// The same for the lines right before `end`.
    std::size_t LengthBefore(const std::vector<std::string_view>& lines, std::size_t end) const;

    /// The first of the lines from `first` to before `end`, which stand between the markers of a notice, that
    /// the module did not write; `end` when it wrote all. A text of which no line is known is one in another
    /// language, and may be any comment.
    std::size_t ForeignLine(const std::vector<std::string_view>& lines, std::size_t first,
                            std::size_t end) const;

    /// The template that a notice tells its reader to edit; empty when it names none.
    std::string TemplateIn(const std::vector<std::string_view>& notice) const;

  private:
    using Lines = std::vector<std::string>;

    void Add(std::string_view text);
    bool HasLine(std::string_view line) const;

    std::vector<Lines> m_texts;
};

}  // namespace ZET

#endif
