#ifndef ZET_PARAM_LOOK_H
#define ZET_PARAM_LOOK_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "text/Sections.h"

namespace ZET::Text {

/// A line that concerns a parameter.
struct ParamLine {
    enum class Form : std::uint8_t {
        Set,            ///< "name=value"
        SetWithBlanks,  ///< "name = value", which the module does not recognise
        CommentedOut,   ///< "#name=value", which the module replaces when it sets the parameter
        Mentioned,      ///< commented out in a form that the module does not recognise
        Former,         ///< kept before a managed block
        BehindMark      ///< as one of the first two, but the module does not see it behind a byte order mark
    };

    Form form = Form::Set;
    std::size_t number = 0;
    std::size_t section = 0;  ///< counted from 1; 0 before the first section
    bool isInBlock = false;
    bool goesOn = false;          ///< in the next line
    bool isContinuation = false;  ///< of the line before it
};

/// Finds a parameter in a text, in whatever form; the text may come in pieces of whole lines.
class ParamLook {
  public:
    explicit ParamLook(std::string name) : m_name(std::move(name)) {}

    /// `before` is the number of lines of the file before these.
    void Take(std::string_view lines, std::size_t before);

    const std::vector<ParamLine>& Lines() const { return m_lines; }

    /// The number of parts of the text that can hold a parameter: its sections, and the settings before them.
    std::size_t PartCount() const { return m_section + (m_isSetBeforeSections ? 1 : 0); }

    /// The name of the last section; empty if there is none.
    const std::string& LastSection() const { return m_lastSection; }

  private:
    class Numbers;

    void TakeLine(std::string_view line, Numbers& numbers);
    bool IsLast(std::string_view line) const;
    bool IsContinuation(std::string_view line) const;

    std::string m_name;
    std::vector<ParamLine> m_lines;
    SectionFollower m_sections;
    std::string_view m_piece;  ///< in which the lines now are
    bool m_pieceBeforeGoesOn = false;
    std::size_t m_section = 0;
    bool m_isSetBeforeSections = false;
    std::string m_lastSection;
};

}  // namespace ZET::Text

#endif
