#include "text/FormerLines.h"

#include "text/Hunks.h"
#include "text/Lines.h"

namespace ZET::Text {

namespace {

/// Follows a unified diff and finds where the lines that it keeps were.
class DiffFollower {
  public:
    explicit DiffFollower(std::string_view diff) : m_rest(diff) {}

    /// `line` must ascend from call to call.
    std::size_t FormerOf(std::size_t line) {
        while (!m_rest.empty() && m_newLine <= line) {
            const std::string_view next = m_rest;
            const TextLine taken = TakeLine(m_rest);
            if (!Take(taken.text, line)) {
                m_rest = next;  // the hunk begins after the line
                break;
            }
            if (m_taken == line) return m_formerOfTaken;
        }
        return m_newLine <= line ? line - m_newLine + m_oldLine : 0;
    }

  private:
    /// False if the text is the head of a hunk that begins after the line.
    bool Take(std::string_view text, std::size_t line) {
        m_taken = 0;
        if (IsInHunk()) {
            TakeInHunk(text);
        } else if (const auto hunk = UnifiedHunkOf(text)) {
            if (hunk->newFirst > line) return false;
            m_oldLine = hunk->oldFirst;
            m_newLine = hunk->newFirst;
            m_oldLeft = hunk->oldCount;
            m_newLeft = hunk->newCount;
        }
        return true;
    }

    bool IsInHunk() const { return m_oldLeft != 0 || m_newLeft != 0; }

    void TakeInHunk(std::string_view text) {
        const char sign = text.empty() ? ' ' : text.front();
        if (sign == '\\') return;  // "\ No newline at end of file"
        if (sign != '-') m_taken = m_newLine;
        m_formerOfTaken = sign == '+' ? 0 : m_oldLine;
        if (sign != '-') ++m_newLine, --m_newLeft;
        if (sign != '+') ++m_oldLine, --m_oldLeft;
    }

    std::string_view m_rest;
    std::size_t m_oldLine = 1;  ///< the next line of each text
    std::size_t m_newLine = 1;
    std::size_t m_oldLeft = 0;  ///< lines left in the hunk
    std::size_t m_newLeft = 0;
    std::size_t m_taken = 0;
    std::size_t m_formerOfTaken = 0;
};

}  // namespace

std::vector<std::size_t> FormerLines(std::string_view diff, const std::vector<std::size_t>& lines) {
    DiffFollower follower(diff);
    std::vector<std::size_t> former;
    former.reserve(lines.size());
    for (const std::size_t line : lines)
        former.push_back(follower.FormerOf(line));
    return former;
}

}  // namespace ZET::Text
