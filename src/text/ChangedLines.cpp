#include "text/ChangedLines.h"

#include "text/Hunks.h"
#include "text/Lines.h"
#include "text/Words.h"

namespace ZET::Text {

namespace {

/// Ranges of line numbers as text.
class Ranges {
  public:
    void Add(std::size_t first, std::size_t count) {
        if (count == 0) return;
        m_isOne = m_text.empty() && count == 1;
        m_text += (m_text.empty() ? "" : ", ") + std::to_string(first);
        if (count > 1) m_text += "-" + std::to_string(first + count - 1);
    }

    bool IsEmpty() const { return m_text.empty(); }

    /// The ranges in the text for one line, or for several.
    std::string In(const char* one, const char* several) const {
        return Words(m_isOne ? one : several, m_text);
    }

  private:
    std::string m_text;
    bool m_isOne = false;
};

/// Reads the lines of a unified diff.
class DiffReader {
  public:
    void Take(std::string_view line) {
        if (const auto hunk = UnifiedHunkOf(line)) {
            End();
            m_oldLine = hunk->oldFirst;
            m_newLine = hunk->newFirst;
            m_isInHunk = true;
        } else if (m_isInHunk) {
            TakeChange(line);
        }
    }

    std::string Result() {
        End();
        std::string text;
        if (!m_changed.IsEmpty())
            text = m_changed.In(ZET_TEXT("line %s changed"), ZET_TEXT("lines %s changed"));
        if (!m_removed.IsEmpty())
            text += (text.empty() ? "" : ", ") + m_removed.In(ZET_TEXT("line %s of the old text removed"),
                                                              ZET_TEXT("lines %s of the old text removed"));
        return text;
    }

  private:
    void TakeChange(std::string_view line) {
        if (line.starts_with('-')) {
            ++m_gone;
        } else if (line.starts_with('+')) {
            ++m_come;
        } else if (line.starts_with(' ')) {
            End();
            ++m_oldLine;
            ++m_newLine;
        }
    }

    /// Ends a run of changed lines without an unchanged one between them.
    void End() {
        m_changed.Add(m_newLine, m_come);
        if (m_come == 0) m_removed.Add(m_oldLine, m_gone);
        m_oldLine += m_gone;
        m_newLine += m_come;
        m_gone = m_come = 0;
    }

    bool m_isInHunk = false;
    std::size_t m_oldLine = 0;
    std::size_t m_newLine = 0;
    std::size_t m_gone = 0;
    std::size_t m_come = 0;
    Ranges m_changed;
    Ranges m_removed;
};

}  // namespace

std::string ChangedLines(std::string_view diff) {
    DiffReader reader;
    for (const TextLine& line : SplitLines(diff))
        reader.Take(line.text);
    return reader.Result();
}

}  // namespace ZET::Text
