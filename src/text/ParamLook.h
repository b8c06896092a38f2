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

/// A line that has to do with a parameter.
struct ParamLine {
    enum class Form : std::uint8_t {
        Set,            ///< "name=value"
        SetWithBlanks,  ///< "name = value", which the module does not take for the parameter
        CommentedOut,   ///< "#name=value", which it does take for it when it sets one
        Mentioned,      ///< commented out in a way in which it does not
        Former,         ///< kept before a managed block
        BehindMark      ///< as one of the first two, which the module does not see behind a byte order mark
    };

    Form form = Form::Set;
    std::size_t number = 0;
    std::size_t section = 0;  ///< counted from 1; 0: before the first
    bool isInBlock = false;
};

/// Looks at a text, which may come in pieces of whole lines, for a parameter, whatever form it has there.
class ParamLook {
  public:
    explicit ParamLook(std::string name) : m_name(std::move(name)) {}

    /// `before` is how many lines of the file stand before these.
    void Take(std::string_view lines, std::size_t before);

    const std::vector<ParamLine>& Lines() const { return m_lines; }

    /// In how many parts of the text a parameter can stand: its sections, and what is set before them.
    std::size_t PartCount() const { return m_section + (m_isSetBeforeSections ? 1 : 0); }

    /// Of the last section; empty where there is none.
    const std::string& LastSection() const { return m_lastSection; }

  private:
    class Numbers;

    void TakeLine(std::string_view line, Numbers& numbers);

    std::string m_name;
    std::vector<ParamLine> m_lines;
    SectionFollower m_sections;
    std::size_t m_section = 0;
    bool m_isSetBeforeSections = false;
    std::string m_lastSection;
};

}  // namespace ZET::Text

#endif
