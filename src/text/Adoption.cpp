#include "text/Adoption.h"

#include <map>
#include <optional>
#include <set>

#include "text/LineOrigin.h"
#include "text/Lines.h"
#include "text/ManagedText.h"
#include "text/Placeholders.h"

namespace ZET::Text {

namespace {

/// Puts placeholders back in place of their values in a line; none if a value is missing, or if there is more
/// than one way.
class LineWithPlaceholders {
  public:
    LineWithPlaceholders(std::string_view templateLine, const StringMap& values) {
        for (PlaceholderRange found = NextPlaceholder(templateLine, 0); found.IsThere() && found.IsClosed();
             found = NextPlaceholder(templateLine, found.end)) {
            const std::string placeholder(found.In(templateLine));
            const auto value = values.find(placeholder);
            if (value == values.end()) continue;
            m_placeholders.push_back(placeholder);
            m_values.push_back(value->second);
        }
    }

    bool IsEmpty() const { return m_placeholders.empty(); }
    const std::vector<std::string>& Placeholders() const { return m_placeholders; }

    std::optional<std::string> Of(std::string_view line) const {
        std::string result;
        std::vector<std::size_t> places;  // the leftmost places at which the values stand in order
        std::size_t next = 0;
        for (std::size_t i = 0; i < m_values.size(); ++i) {
            const std::size_t place = line.find(m_values[i], next);
            if (place == std::string_view::npos) return std::nullopt;
            places.push_back(place);
            result.append(line.substr(next, place - next)).append(m_placeholders[i]);
            next = place + m_values[i].size();
        }
        if (!IsOnlyWay(line, places)) return std::nullopt;
        return result.append(line.substr(next));
    }

  private:
    /// Every way lies between the leftmost and the rightmost places, so there is only one if these agree. An
    /// empty value can stand anywhere.
    bool IsOnlyWay(std::string_view line, const std::vector<std::size_t>& leftmost) const {
        for (std::size_t i = m_values.size(); i-- > 0;) {
            if (m_values[i].empty() || line.rfind(m_values[i]) != leftmost[i]) return false;
            line = line.substr(0, leftmost[i]);
        }
        return true;
    }

    std::vector<std::string> m_placeholders;
    std::vector<std::string> m_values;
};

/// The lines of a text, numbered from 1.
class NumberedLines {
  public:
    explicit NumberedLines(std::string_view text) : m_lines(SplitLines(text)) {}
    std::string_view operator[](std::size_t number) const { return m_lines.at(number - 1).text; }
    std::size_t Count() const { return m_lines.size(); }

  private:
    std::vector<TextLine> m_lines;
};

/// Walks through the template once and writes the new one.
class Adopter {
  public:
    Adopter(std::string_view templateText, std::string_view rendered, std::string_view edited,
            const StringMap& values)
        : m_template(templateText),
          m_rendered(rendered),
          m_edited(edited),
          m_values(values),
          m_endsOpen(!templateText.empty() && templateText.back() != '\n') {
        for (const LineOrigin& origin : TraceLines(ManagedText(rendered), templateText, values))
            m_origins.push_back(origin);
        m_editedEndsOpen = !edited.empty() && edited.back() != '\n';
    }

    Adoption Run(const std::vector<Hunk>& hunks) {
        for (const LineOrigin& origin : m_origins)
            m_result.isTraceable =
                m_result.isTraceable && origin.certainty == LineOrigin::Certainty::Rendered;
        if (!m_result.isTraceable) return std::move(m_result);
        for (const Hunk& hunk : hunks)
            LookForMoved(hunk);
        for (const Hunk& hunk : hunks)
            Take(hunk);
        KeepTo(m_template.Count() + 1);
        const bool endsOpen = hunks.empty() ? m_endsOpen : m_editedEndsOpen;
        if (endsOpen && m_result.templateText.ends_with('\n')) m_result.templateText.pop_back();
        return std::move(m_result);
    }

  private:
    /// The template line that a rendered line was made from; past the last one, the end.
    std::size_t TemplateLineOf(std::size_t rendered) const {
        return rendered <= m_origins.size() ? m_origins[rendered - 1].templateLine : m_template.Count() + 1;
    }

    /// Whether a template line that makes this rendered line makes the one after it, too.
    bool GoesOn(std::size_t rendered) const {
        return rendered > 0 && rendered < m_origins.size() &&
               TemplateLineOf(rendered) == TemplateLineOf(rendered + 1);
    }

    bool IsOneOfSeveral(std::size_t rendered) const { return GoesOn(rendered) || GoesOn(rendered - 1); }

    /// Whether the hunk takes out this line, and with it all lines that its template line makes.
    bool TakesOut(const Hunk& hunk, std::size_t rendered) const {
        const bool isLast = rendered + 1 == hunk.oldFirst + hunk.oldCount;
        return hunk.newCount == 0 && !m_come.contains(m_rendered[rendered]) && !(isLast && GoesOn(rendered));
    }

    /// A line that the hunk changes, though its template line makes others, too; 0 if there is none.
    std::size_t BrokenBy(const Hunk& hunk) const {
        if (GoesOn(hunk.oldFirst - 1)) return hunk.oldFirst;
        for (std::size_t old = hunk.oldFirst; old < hunk.oldFirst + hunk.oldCount; ++old)
            if (IsOneOfSeveral(old) && !TakesOut(hunk, old)) return old;
        return 0;
    }

    LineWithPlaceholders ModelOf(std::string_view templateLine) const {
        return {HasNoPlaceholders(templateLine) ? "" : templateLine, m_values};
    }

    /// Notes lines that a hunk removes or adds: a line that was moved unchanged takes its placeholders along.
    void LookForMoved(const Hunk& hunk) {
        for (std::size_t old = hunk.oldFirst; old < hunk.oldFirst + hunk.oldCount; ++old) {
            const std::string_view line = m_template[TemplateLineOf(old)];
            if (!IsOneOfSeveral(old) && !ModelOf(line).IsEmpty()) m_gone[m_rendered[old]].insert(line);
        }
        for (std::size_t number = hunk.newFirst; number < hunk.newFirst + hunk.newCount; ++number)
            m_come.insert(m_edited[number]);
    }

    void Write(std::string_view line) { m_result.templateText.append(line).append("\n"); }

    /// Copies the template's lines before `end`.
    void KeepTo(std::size_t end) {
        for (; m_next < end; ++m_next)
            Write(m_template[m_next]);
    }

    void Take(const Hunk& hunk) {
        if (const std::size_t broken = BrokenBy(hunk))
            return Refuse(m_template[TemplateLineOf(broken)], hunk.newFirst);
        if (hunk.oldCount == 0) {
            // After the line that precedes them, and before the template's next line.
            KeepTo(hunk.oldFirst == 1 ? TemplateLineOf(1) : TemplateLineOf(hunk.oldFirst - 1) + 1);
            WriteEdited(hunk.newFirst, hunk.newFirst + hunk.newCount);
            return;
        }
        KeepTo(TemplateLineOf(hunk.oldFirst));
        m_taken = hunk.newFirst;
        for (std::size_t old = hunk.oldFirst; old < hunk.oldFirst + hunk.oldCount; ++old) {
            if (GoesOn(old - 1)) continue;
            KeepTo(TemplateLineOf(old));  // keeps comments before the line
            if (!Replace(m_template[m_next], hunk) && !m_come.contains(m_rendered[old]))
                Refuse(m_template[m_next], hunk);
            ++m_next;
        }
        WriteEdited(m_taken, hunk.newFirst + hunk.newCount);
    }

    /// Replaces one changed template line. If it has no placeholders, its successors are copied with the
    /// rest. False if no edited line holds its values.
    bool Replace(std::string_view templateLine, const Hunk& hunk) {
        const LineWithPlaceholders model = ModelOf(templateLine);
        if (model.IsEmpty() || hunk.newCount == 0) return true;
        for (std::size_t number = m_taken; number < hunk.newFirst + hunk.newCount; ++number) {
            const auto line = model.Of(m_edited[number]);
            if (!line) continue;
            WriteEdited(m_taken, number);
            Write(*line);
            m_taken = number + 1;
            return true;
        }
        return false;
    }

    void Refuse(std::string_view templateLine, const Hunk& hunk) {
        const bool isAnyLeft = m_taken < hunk.newFirst + hunk.newCount;
        Refuse(templateLine, isAnyLeft ? m_taken : hunk.newFirst);
    }

    void Refuse(std::string_view templateLine, std::size_t number) {
        m_result.refused.push_back({number, ModelOf(templateLine).Placeholders()});
    }

    void WriteEdited(std::size_t first, std::size_t end) {
        for (std::size_t number = first; number < end; ++number) {
            const auto gone = m_gone.find(m_edited[number]);
            Write(gone == m_gone.end() ? m_edited[number] : *gone->second.begin());
            // It may come from either template line.
            if (gone != m_gone.end() && gone->second.size() > 1) Refuse(*gone->second.begin(), number);
        }
    }

    const NumberedLines m_template;
    const NumberedLines m_rendered;
    const NumberedLines m_edited;
    const StringMap& m_values;
    const bool m_endsOpen;
    bool m_editedEndsOpen = false;
    std::vector<LineOrigin> m_origins;
    std::size_t m_next = 1;   ///< the first template line not yet handled
    std::size_t m_taken = 1;  ///< the first line of the hunk not yet written, in the edited file
    std::map<std::string_view, std::set<std::string_view>> m_gone;  ///< removed lines and their templates
    std::set<std::string_view> m_come;                              ///< lines that a hunk adds
    Adoption m_result;
};

}  // namespace

Adoption AdoptEdit(std::string_view templateText, std::string_view rendered, std::string_view edited,
                   const std::vector<Hunk>& hunks, const StringMap& values) {
    return Adopter(templateText, rendered, edited, values).Run(hunks);
}

}  // namespace ZET::Text
