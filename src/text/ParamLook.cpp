#include "text/ParamLook.h"

#include <algorithm>
#include <optional>

#include "text/Continuation.h"
#include "text/FirstLine.h"
#include "text/Lines.h"
#include "text/NextPlace.h"

namespace ZET::Text {

namespace {

using Form = ParamLine::Form;

/// Removes these bytes from the front; true if there were any.
bool Skip(std::string_view& line, std::string_view bytes) {
    const std::size_t count = std::min(line.find_first_not_of(bytes), line.size());
    line.remove_prefix(count);
    return count > 0;
}

/// Removes the lines before the one at `place`.
void SkipTo(std::string_view& lines, const char* place) {
    lines.remove_prefix(LinesBefore(lines, static_cast<std::size_t>(place - lines.data())).size());
}

/// Whether the text begins with the name and "=", and whether blanks are between them.
struct NameAndSign {
    bool isThere = false;
    bool hasBlanks = false;
};

NameAndSign LookForName(std::string_view text, std::string_view name) {
    if (!text.starts_with(name)) return {};
    text.remove_prefix(name.size());
    const bool hasBlanks = Skip(text, kBlanks);
    return {text.starts_with('='), hasBlanks};
}

std::optional<Form> FormOf(std::string_view line, std::string_view name);

std::optional<Form> FormBehindMark(std::string_view line, std::string_view name) {
    const std::optional<Form> form = FormOf(line, name);
    if (form == Form::Set || form == Form::SetWithBlanks) return Form::BehindMark;
    return form == Form::CommentedOut || form == Form::Mentioned ? std::optional(Form::Mentioned)
                                                                 : std::nullopt;
}

std::optional<Form> FormOf(std::string_view line, std::string_view name) {
    if (line.starts_with(kByteOrderMark)) return FormBehindMark(line.substr(kByteOrderMark.size()), name);
    const bool isFormer = MarkerOf(line) == Marker::FormerLine;
    if (isFormer) line.remove_prefix(MarkerText(Marker::FormerLine).size());
    const bool isCommentedOut = Skip(line, "#");
    Skip(line, kBlanks);
    const bool isOtherComment = Skip(line, kCommentStarts);
    Skip(line, kBlanks);
    const NameAndSign found = LookForName(line, name);
    if (!found.isThere) return std::nullopt;
    if (isFormer) return found.hasBlanks || isOtherComment ? std::nullopt : std::optional(Form::Former);
    if (isOtherComment || (isCommentedOut && found.hasBlanks)) return Form::Mentioned;
    if (isCommentedOut) return Form::CommentedOut;
    return found.hasBlanks ? Form::SetWithBlanks : Form::Set;
}

}  // namespace

/// Determines the numbers of a few lines out of many.
class ParamLook::Numbers {
  public:
    Numbers(std::string_view lines, std::size_t before) : m_left(lines), m_number(before + 1) {}

    /// Must be called for ascending lines.
    std::size_t Of(std::string_view line) {
        const auto passed = static_cast<std::size_t>(line.data() - m_left.data());
        m_number += CountLineFeeds(m_left.substr(0, passed));
        m_left.remove_prefix(passed);
        return m_number;
    }

  private:
    std::string_view m_left;
    std::size_t m_number;
};

/// Most lines of most files have nothing to do with one parameter: lines that neither name it nor are a
/// heading or a marker are skipped.
void ParamLook::Take(std::string_view lines, std::size_t before) {
    if (m_pieceBeforeGoesOn && !lines.empty() && !m_lines.empty() && m_lines.back().number == before)
        m_lines.back().goesOn = true;
    m_piece = lines;
    Numbers numbers(lines, before);
    NextPlace name(lines, m_name);
    NextPlace heading(lines, "[");
    // Searching a single byte takes a fifth of the time.
    const bool hasMarkers = lines.find(kMarkerStart.back()) != std::string_view::npos;
    NextPlace marker(hasMarkers ? lines : lines.substr(lines.size()), kMarkerStart);
    while (!lines.empty()) {
        if (m_isSetBeforeSections || m_section > 0)
            SkipTo(lines, std::min({name.In(lines), heading.In(lines), marker.In(lines)}));
        if (!lines.empty()) TakeLine(Text::TakeLine(lines).text, numbers);
    }
    m_pieceBeforeGoesOn = GoesOn(LastLineOf(m_piece));
}

void ParamLook::TakeLine(std::string_view line, Numbers& numbers) {
    if (const auto heading = m_sections.Take(line)) {
        ++m_section;
        m_lastSection = heading->name;
        return;
    }
    if (m_section == 0 && !m_isSetBeforeSections) m_isSetBeforeSections = IsSetting(line);
    if (const auto form = FormOf(line, m_name))
        m_lines.push_back({*form, numbers.Of(line), m_section, m_sections.IsInBlock(),
                           GoesOn(line) && !IsLast(line), IsContinuation(line)});
}

/// Whether the piece ends with the line.
bool ParamLook::IsLast(std::string_view line) const {
    return line.data() + line.size() + 1 >= m_piece.data() + m_piece.size();
}

bool ParamLook::IsContinuation(std::string_view line) const {
    const auto passed = static_cast<std::size_t>(line.data() - m_piece.data());
    return passed == 0 ? m_pieceBeforeGoesOn : GoesOn(LastLineOf(m_piece.substr(0, passed)));
}

}  // namespace ZET::Text
