#include "cli/ExplanationWords.h"

#include <algorithm>

#include "cli/HistoryWords.h"
#include "cli/Translation.h"
#include "text/Joined.h"

namespace ZET::Cli {

namespace {

using Kind = Text::ExplainedLines::Kind;

constexpr char kChangedSince[] = ZET_TEXT("the file was edited since, or the template changed");

std::string WithoutEnd(const Text::ExplainedLines& lines) {
    return lines.isClosed ? "" : _(", without an end marker (see doctor)");
}

std::string PlaceholderText(const Text::ExplainedLines& lines) {
    if (lines.placeholders.empty()) return "";
    return " " + Filled(_("with %s"), {Text::Joined(lines.placeholders, ", ")});
}

}  // namespace

std::optional<LineAge> NewestAge(const FileExplanation& file, const Text::ExplainedLines& lines) {
    std::optional<LineAge> newest;
    for (std::size_t line = lines.first; line <= lines.last && line <= file.ages.size(); ++line) {
        const std::optional<LineAge>& age = file.ages[line - 1];
        if (age && (!newest || IsNewer(*age, *newest))) newest = age;
    }
    return newest;
}

std::string ExplanationWords::OfFile() const {
    std::string text = m_path + ": ";
    if (m_origin.isMade) {
        text += Filled(_("made from the template %s"), {TemplateName()});
        if (m_file.HasUntracedLines()) text += ": " + WhyUntraced();
    } else if (m_origin.target) {
        text += Filled(_("no notice says that it was made from the template %s, whose target it is"),
                       {m_origin.target->templateName});
    } else {
        text += _("not made from a template");
    }
    return text + ReserveText();
}

std::string ExplanationWords::OfLines(const Text::ExplainedLines& lines, std::size_t line) const {
    const bool isOneLine = line != 0;
    std::string text = m_path + ":" + std::to_string(isOneLine ? line : lines.first) + ": ";
    if (lines.first != lines.last)
        text += Filled(_("lines %s to %s"), {std::to_string(lines.first), std::to_string(lines.last)}) + ": ";
    return text + Describe(lines, isOneLine) + Since(lines);
}

std::string ExplanationWords::ReserveText() const {
    if (!m_file.reserve.empty()) return "; " + Filled(_("before: %s"), {m_file.reserve});
    return m_file.hadNoFile ? std::string("; ") + _("before: there was no such file") : "";
}

std::string ExplanationWords::TemplateName() const {
    if (m_origin.templateFile.empty() || m_origin.templateFile == m_origin.templateName)
        return m_origin.templateName;
    return m_origin.templateName + " (" + m_origin.templateFile + ")";
}

std::string ExplanationWords::WhyUntraced() const {
    return m_origin.templateFile.empty() ? _("it is gone") : _(kChangedSince);
}

std::string ExplanationWords::Shown(std::string_view text) const {
    return m_file.isHidden ? _("(secret)") : "\"" + std::string(text) + "\"";
}

std::string ExplanationWords::Describe(const Text::ExplainedLines& lines, bool isOneLine) const {
    switch (lines.kind) {
        case Kind::Own:
            return _("the administrator's own") + (isOneLine ? ReserveText() : "");
        case Kind::Gap:
            return _("empty line, put there before the managed block that was appended after it");
        case Kind::FormerLine:
            return Filled(_("kept former line of the managed block that begins in line %s: %s"),
                          {std::to_string(lines.block), Shown(lines.formerText)}) +
                   FromTemplateLine(lines);
        case Kind::LoneFormerLine:
            return Filled(
                _("kept former line: %s; its block was taken out or lost; %s brings it back"),
                {Shown(lines.formerText) + FromTemplateLine(lines), HowToRestore(lines.formerText)});
        case Kind::Block:
            return DescribeBlock(lines);
        case Kind::Notice:
            return _("the notice") + WithoutEnd(lines);
        case Kind::TemplateComment:
            return _("template comment") + WithoutEnd(lines);
        case Kind::FromTemplate:
            return OfTemplate(lines, ZET_TEXT("from line %s of the template %s"),
                              ZET_TEXT("from lines %s to %s of the template %s")) +
                   PlaceholderText(lines) + (isOneLine ? ReserveText() : "");
        case Kind::Differing:
            return OfTemplate(
                       lines, ZET_TEXT("in the place of line %s of the template %s, but not made from it"),
                       ZET_TEXT("in the place of lines %s to %s of the template %s, but not made from it")) +
                   ": " + _(kChangedSince) + (isOneLine ? ReserveText() : "");
        case Kind::Untraced:
            break;
    }
    return Filled(_("cannot be traced to the template %s"), {TemplateName()}) + ": " + WhyUntraced() +
           (isOneLine ? ReserveText() : "");
}

std::string ExplanationWords::DescribeBlock(const Text::ExplainedLines& lines) const {
    const std::string text = _("managed block") + WithoutEnd(lines) + ": " + ContentOf(lines) + "; ";
    if (lines.formerLine == 0) return text + _("appended, nothing stood there before");
    return text +
           Filled(_("before: %s, kept in line %s"),
                  {Shown(lines.formerText), std::to_string(lines.formerLine)}) +
           FromTemplateLine(lines);
}

std::string ExplanationWords::ContentOf(const Text::ExplainedLines& lines) const {
    if (lines.content.empty()) return _("empty");
    const std::string first = Shown(lines.content.front());
    const std::size_t more = lines.content.size() - 1;
    if (more == 0) return first;
    return Filled(Plural("%s and %s more line", "%s and %s more lines", more), {first, std::to_string(more)});
}

std::string ExplanationWords::FromTemplateLine(const Text::ExplainedLines& lines) const {
    if (lines.templateLine == 0) return "";
    return ", " +
           Filled(_("from line %s of the template %s"),
                  {std::to_string(lines.templateLine), m_origin.templateName}) +
           PlaceholderText(lines);
}

std::string ExplanationWords::OfTemplate(const Text::ExplainedLines& lines, const char* one,
                                         const char* several) const {
    const std::size_t count = lines.last - lines.first;
    const std::string first = std::to_string(lines.templateLine);
    if (count == 0) return Filled(_(one), {first, m_origin.templateName});
    return Filled(_(several), {first, std::to_string(lines.templateLine + count), m_origin.templateName});
}

std::string ExplanationWords::HowToRestore(std::string_view former) const {
    const std::string begin = "\"" + m_program;
    const std::size_t equals = former.find('=');
    const std::size_t name = former.find_first_not_of("# \t");
    const bool isParam = equals != std::string_view::npos && name < equals &&
                         former.find_first_of(" \t", name) > equals && !m_file.isHidden;
    if (isParam)
        return begin + " param restore " + m_path + " " + std::string(former.substr(name, equals - name)) +
               "\"";
    return begin + " line restore " + m_path + " PATTERN\"";
}

std::string ExplanationWords::Since(const Text::ExplainedLines& lines) const {
    const std::optional<LineAge> newest = NewestAge(m_file, lines);
    if (!newest) return "";
    const auto first = m_file.ages.begin() + static_cast<std::ptrdiff_t>(lines.first) - 1;
    const auto end = first + static_cast<std::ptrdiff_t>(lines.last - lines.first) + 1;
    const bool isOfAll = std::all_of(first, end, [&](const auto& age) { return age == newest; });
    const std::string since = SinceText(*newest);
    return "; " + (isOfAll ? since : Filled(_("in parts %s"), {since}));
}

}  // namespace ZET::Cli
