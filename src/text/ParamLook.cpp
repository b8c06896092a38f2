#include "text/ParamLook.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "text/Lines.h"

namespace ZET::Text {

namespace {

using Form = ParamLine::Form;

constexpr std::string_view kBlanks = " \t\v\f\r";
constexpr std::string_view kCommentStarts = "#;";

bool Has(std::string_view lines, std::string_view text) {
    return memmem(lines.data(), lines.size(), text.data(), text.size()) != nullptr;
}

/// Takes these bytes off the beginning, and tells whether there were any.
bool Skip(std::string_view& line, std::string_view bytes) {
    const std::size_t count = std::min(line.find_first_not_of(bytes), line.size());
    line.remove_prefix(count);
    return count > 0;
}

/// Whether the text is the name and "="; with blanks in between, or without.
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

std::optional<Form> FormOf(std::string_view line, std::string_view name) {
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

bool IsSetting(std::string_view line) {
    Skip(line, kBlanks);
    return !line.empty() && kCommentStarts.find(line.front()) == std::string_view::npos;
}

}  // namespace

/// Most of most files has nothing to do with one parameter.
bool ParamLook::HasNothing(std::string_view lines) const {
    return (m_isSetBeforeSections || m_section > 0) && !Has(lines, "[") && !Has(lines, m_name) &&
           !Has(lines, kMarkerStart);
}

void ParamLook::Take(std::string_view lines) {
    if (HasNothing(lines)) {
        m_number += CountLines(lines);
        return;
    }
    while (!lines.empty())
        TakeLine(Text::TakeLine(lines).text);
}

void ParamLook::TakeLine(std::string_view line) {
    ++m_number;
    if (const auto heading = m_sections.Take(line)) {
        ++m_section;
        m_lastSection = heading->name;
        return;
    }
    if (m_section == 0 && !m_isSetBeforeSections) m_isSetBeforeSections = IsSetting(line);
    if (const auto form = FormOf(line, m_name))
        m_lines.push_back({*form, m_number, m_section, m_sections.IsInBlock()});
}

}  // namespace ZET::Text
