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

/// Consecutive lines of a file with the same explanation.
struct ExplainedLines {
    enum class Kind {
        Own,             ///< the administrator's
        Gap,             ///< the empty line before an appended block
        FormerLine,      ///< the kept former line of a block
        LoneFormerLine,  ///< a kept former line whose block is gone
        Block,
        Notice,
        TemplateComment,
        FromTemplate,  ///< rendered from template lines
        Differing,     ///< in place of a template line that it cannot come from
        Untraced       ///< made from a template, but the line is unknown
    };

    Kind kind = Kind::Own;
    std::size_t first = 0;
    std::size_t last = 0;
    bool isClosed = true;
    std::size_t formerLine = 0;    ///< for a block: the number of its kept former line, or 0
    std::size_t block = 0;         ///< for a kept former line: the first line of its block, or 0
    std::size_t templateLine = 0;  ///< the first one, also for a block in its place; 0 if none
    std::vector<std::string> placeholders = {};
    std::vector<std::string_view> content = {};  ///< lines of a block
    std::string_view formerText = {};
};

/// "own", "gap", "former-line", ...
const char* NameOf(ExplainedLines::Kind kind);

/// Explains every line of a text, in order. `isMade` means that the file was made from a template, whose text
/// is `templateText`; `values` are those of its placeholders. Explanations are produced one at a time, so
/// that for a large text only the text and its regions are in memory. The arguments must outlive the object;
/// the explanations refer to the text.
class TextExplanation {
  public:
    TextExplanation(const ManagedText& text, bool isMade, std::string_view templateText,
                    const StringMap& values = {});

    void ForEach(const std::function<void(const ExplainedLines& lines)>& take) const;

    /// The explanation of that one line.
    ExplainedLines Of(std::size_t line) const;

  private:
    const ManagedText& m_text;
    bool m_isMade;
    std::vector<TextLine> m_templateLines;
    std::vector<LineOrigin> m_origins;
};

}  // namespace ZET::Text

#endif
