#ifndef ZET_EXPLANATION_H
#define ZET_EXPLANATION_H

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "text/LineOrigin.h"
#include "text/Lines.h"
#include "text/ManagedText.h"

namespace ZET::Text {

/// Lines of a file that have one explanation.
struct ExplainedLines {
    enum class Kind {
        Own,             ///< the administrator's
        Gap,             ///< the empty line that was put before an appended block
        FormerLine,      ///< of a block
        LoneFormerLine,  ///< its block is gone
        Block,
        Notice,
        TemplateComment,
        FromTemplate,  ///< rendered from the template's lines
        Differing,     ///< in the place of the template's line
        Untraced       ///< of a made file, but nobody can say from which line
    };

    Kind kind = Kind::Own;
    std::size_t first = 0;
    std::size_t last = 0;
    bool isClosed = true;
    std::size_t formerLine = 0;    ///< of a block: the number of the kept former line, or 0
    std::size_t block = 0;         ///< of a kept former line: the number of its block's first line, or 0
    std::size_t templateLine = 0;  ///< the first one; also of a block in place of such a line; 0: none
    std::vector<std::string> placeholders = {};
    std::vector<std::string_view> content = {};  ///< of a block
    std::string_view formerText = {};
};

/// "own", "gap", "former-line", ...
const char* NameOf(ExplainedLines::Kind kind);

/// Explains every line of a text, in their order. `isMade` says that the file was made from a template,
/// `templateText` is what the template holds. One explanation comes after the other: of a large one, no more
/// is in memory than the text and where its regions are. What is given must outlive the object; the
/// explanations quote the text.
class TextExplanation {
  public:
    TextExplanation(const ManagedText& text, bool isMade, std::string_view templateText);

    void ForEach(const std::function<void(const ExplainedLines& lines)>& take) const;

    /// The explanation that holds for that one line.
    ExplainedLines Of(std::size_t line) const;

  private:
    const ManagedText& m_text;
    bool m_isMade;
    std::vector<TextLine> m_templateLines;
    std::vector<LineOrigin> m_origins;
};

}  // namespace ZET::Text

#endif
