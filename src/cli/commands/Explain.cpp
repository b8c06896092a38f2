#include <algorithm>
#include <charconv>
#include <cstddef>
#include <optional>

#include "cli/ExitStatus.h"
#include "cli/Fields.h"
#include "cli/HistoryWords.h"
#include "cli/Session.h"
#include "cli/Translation.h"
#include "cli/commands/Registrations.h"
#include "deploy/edit/FileExplanation.h"
#include "deploy/host/Failure.h"
#include "deploy/state/ParameterNames.h"
#include "text/Joined.h"
#include "zet/ZETFiles.h"

namespace ZET::Cli {

namespace {

using Kind = Text::ExplainedLines::Kind;

constexpr char kChangedSince[] = ZET_TEXT("the file was edited since, or the template changed");

struct ExplainOptions {
    std::string place;
};

/// The parts of FILE[:LINE].
struct Place {
    std::string file;
    std::string line;  ///< digits; empty for the whole file
};

/// An existing file takes precedence over one whose name is only part of the argument.
Place TakeApart(Session& session, const std::string& argument) {
    const std::size_t colon = argument.rfind(':');
    if (colon == std::string::npos || colon + 1 == argument.size() ||
        argument.find_first_not_of("0123456789", colon + 1) != std::string::npos ||
        IsFileExist(session.Product().FilePath(argument)))
        return {argument, ""};
    return {argument.substr(0, colon), argument.substr(colon + 1)};
}

std::size_t LineNumber(const Place& place, const std::string& path, std::size_t count) {
    std::size_t number = 0;
    const char* const end = place.line.data() + place.line.size();
    const bool isNumber = std::from_chars(place.line.data(), end, number).ec == std::errc();
    if (isNumber && number >= 1 && number <= count) return number;
    throw UsageError(
        path + ": " +
        Filled(Plural("has no line %s (it has %s line)", "has no line %s (it has %s lines)", count),
               {place.line, std::to_string(count)}));
}

/// Reports an explanation in words.
class Teller {
  public:
    Teller(Session& session, const FileExplanation& file)
        : m_session(session), m_file(file), m_path(file.path), m_origin(file.origin) {}

    void TellFile() {
        Report& out = m_session.Out();
        out.Set("path", m_session.Product().HostPaths().RealName(m_path));
        out.Set("made_from", m_origin.isMade ? Value(m_origin.templateName) : Value(nullptr));
        out.Set("template_file", TextOrNull(m_origin.templateFile));
        out.Set("reserve", TextOrNull(m_file.reserve));
        out.Set("no_file_before", m_file.hadNoFile);
        out.Set("secret", m_origin.isPrivate);
    }

    void TellFileInWords() {
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
        m_session.Out().Line(text + ReserveText());
    }

    void TellWhatIsHidden() {
        if (m_isLeftOut)
            m_session.Out().Remark(m_path + ": " + m_session.Product().HostSecrets().Excuse(m_path));
    }

    void Tell(const Text::ExplainedLines& lines, std::size_t line) {
        m_session.Out().Add("regions", ToFields(lines));
        m_isLeftOut = m_isLeftOut || (m_file.isHidden && (HasFormerText(lines) || !lines.content.empty()));
        const bool isOneLine = line != 0;
        std::string text = m_path + ":" + std::to_string(isOneLine ? line : lines.first) + ": ";
        if (lines.first != lines.last)
            text +=
                Filled(_("lines %s to %s"), {std::to_string(lines.first), std::to_string(lines.last)}) + ": ";
        text += Describe(lines, isOneLine);
        m_session.Out().Line(text + Since(lines));
    }

  private:
    std::string ReserveText() const {
        if (!m_file.reserve.empty()) return "; " + Filled(_("before: %s"), {m_file.reserve});
        return m_file.hadNoFile ? std::string("; ") + _("before: there was no such file") : "";
    }

    std::string TemplateName() const {
        if (m_origin.templateFile.empty() || m_origin.templateFile == m_origin.templateName)
            return m_origin.templateName;
        return m_origin.templateName + " (" + m_origin.templateFile + ")";
    }

    std::string WhyUntraced() const {
        return m_origin.templateFile.empty() ? _("it is gone") : _(kChangedSince);
    }

    std::string Shown(std::string_view text) const {
        return m_file.isHidden ? _("(secret)") : "\"" + std::string(text) + "\"";
    }

    std::string Describe(const Text::ExplainedLines& lines, bool isOneLine) const {
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
                           lines,
                           ZET_TEXT("in the place of line %s of the template %s, but not made from it"),
                           ZET_TEXT(
                               "in the place of lines %s to %s of the template %s, but not made from it")) +
                       ": " + _(kChangedSince) + (isOneLine ? ReserveText() : "");
            case Kind::Untraced:
                break;
        }
        return Filled(_("cannot be traced to the template %s"), {TemplateName()}) + ": " + WhyUntraced() +
               (isOneLine ? ReserveText() : "");
    }

    std::string DescribeBlock(const Text::ExplainedLines& lines) const {
        const std::string text = _("managed block") + WithoutEnd(lines) + ": " + ContentOf(lines) + "; ";
        if (lines.formerLine == 0) return text + _("appended, nothing stood there before");
        return text +
               Filled(_("before: %s, kept in line %s"),
                      {Shown(lines.formerText), std::to_string(lines.formerLine)}) +
               FromTemplateLine(lines);
    }

    static std::string WithoutEnd(const Text::ExplainedLines& lines) {
        return lines.isClosed ? "" : _(", without an end marker (see doctor)");
    }

    std::string ContentOf(const Text::ExplainedLines& lines) const {
        if (lines.content.empty()) return _("empty");
        const std::string first = Shown(lines.content.front());
        const std::size_t more = lines.content.size() - 1;
        if (more == 0) return first;
        return Filled(Plural("%s and %s more line", "%s and %s more lines", more),
                      {first, std::to_string(more)});
    }

    std::string FromTemplateLine(const Text::ExplainedLines& lines) const {
        if (lines.templateLine == 0) return "";
        return ", " +
               Filled(_("from line %s of the template %s"),
                      {std::to_string(lines.templateLine), m_origin.templateName}) +
               PlaceholderText(lines);
    }

    /// The text about one line of the template, or about several.
    std::string OfTemplate(const Text::ExplainedLines& lines, const char* one, const char* several) const {
        const std::size_t count = lines.last - lines.first;
        const std::string first = std::to_string(lines.templateLine);
        if (count == 0) return Filled(_(one), {first, m_origin.templateName});
        return Filled(_(several), {first, std::to_string(lines.templateLine + count), m_origin.templateName});
    }

    static std::string PlaceholderText(const Text::ExplainedLines& lines) {
        if (lines.placeholders.empty()) return "";
        return " " + Filled(_("with %s"), {Text::Joined(lines.placeholders, ", ")});
    }

    std::string HowToRestore(std::string_view former) const {
        const std::string begin = "\"" + m_session.Asked().program;
        const std::size_t equals = former.find('=');
        const std::size_t name = former.find_first_not_of("# \t");
        const bool isParam = equals != std::string_view::npos && name < equals &&
                             former.find_first_of(" \t", name) > equals && !m_file.isHidden;
        if (isParam)
            return begin + " param restore " + m_path + " " +
                   std::string(former.substr(name, equals - name)) + "\"";
        return begin + " line restore " + m_path + " PATTERN\"";
    }

    /// The age of the newest of the lines; none if they are older than the history.
    std::optional<LineAge> NewestAge(const Text::ExplainedLines& lines) const {
        std::optional<LineAge> newest;
        for (std::size_t line = lines.first; line <= lines.last && line <= m_file.ages.size(); ++line) {
            const std::optional<LineAge>& age = m_file.ages[line - 1];
            if (age && (!newest || IsNewer(*age, *newest))) newest = age;
        }
        return newest;
    }

    std::string Since(const Text::ExplainedLines& lines) const {
        const std::optional<LineAge> newest = NewestAge(lines);
        if (!newest) return "";
        const auto first = m_file.ages.begin() + static_cast<std::ptrdiff_t>(lines.first) - 1;
        const auto end = first + static_cast<std::ptrdiff_t>(lines.last - lines.first) + 1;
        const bool isOfAll = std::all_of(first, end, [&](const auto& age) { return age == newest; });
        const std::string since = SinceText(*newest);
        return "; " + (isOfAll ? since : Filled(_("in parts %s"), {since}));
    }

    static bool HasFormerText(const Text::ExplainedLines& lines) {
        return lines.formerLine != 0 || lines.kind == Kind::FormerLine || lines.kind == Kind::LoneFormerLine;
    }

    Fields ToFields(const Text::ExplainedLines& lines) const {
        const bool isOfTemplate = lines.templateLine != 0;
        return {
            {"kind", NameOf(lines.kind)},
            {"first_line", Number(lines.first)},
            {"last_line", Number(lines.last)},
            {"closed", lines.isClosed},
            {"template", isOfTemplate ? Value(m_origin.templateName) : Value(nullptr)},
            {"template_line", Number(lines.templateLine)},
            {"placeholders", NamesOf(lines.placeholders)},
            {"content", m_file.isHidden ? Value(nullptr) : Value(TextsOf(lines.content))},
            {"former_line", Number(lines.formerLine)},
            {"former_text", HasFormerText(lines) && !m_file.isHidden ? Value(std::string(lines.formerText))
                                                                     : Value(nullptr)},
            {"block_line", Number(lines.block)},
            {"since", SinceValue(NewestAge(lines))},
            {"reserve", TextOrNull(m_file.reserve)}};
    }

    template <typename Placeholders>
    static List NamesOf(const Placeholders& placeholders) {
        List names;
        for (const std::string& placeholder : placeholders)
            names.emplace_back(Deploy::NameOfPlaceholder(placeholder));
        return names;
    }

    static List TextsOf(const std::vector<std::string_view>& texts) {
        List list;
        for (const std::string_view text : texts)
            list.emplace_back(std::string(text));
        return list;
    }

    static Value Number(std::size_t number) { return NumberOrNull(static_cast<std::int64_t>(number)); }

    Session& m_session;
    const FileExplanation& m_file;
    const std::string& m_path;
    const FileOrigin& m_origin;
    bool m_isLeftOut = false;  ///< some text was hidden
};

/// Gives the document the fields that it has even if the lookup fails.
void BeginExplanation(Report& out) {
    for (const char* field :
         {"file", "path", "made_from", "template_file", "reserve", "no_file_before", "secret"})
        out.Set(field, nullptr);
    out.AddList("regions");
}

int Explain(Session& session, const ExplainOptions& asked) {
    BeginExplanation(session.Out());
    const Place place = TakeApart(session, asked.place);
    session.Out().Set("file", place.file);
    const FileExplanation file = ExplainFile(session.Product(), place.file);
    const std::size_t line = place.line.empty() ? 0 : LineNumber(place, file.path, file.lineCount);
    Teller teller(session, file);
    teller.TellFile();
    if (line != 0) {
        teller.Tell(file.lines->Of(line), line);
    } else {
        teller.TellFileInWords();
        file.lines->ForEach([&](const Text::ExplainedLines& lines) { teller.Tell(lines, 0); });
    }
    teller.TellWhatIsHidden();
    return kDone;
}

}  // namespace

void RegisterExplain(CommandLine& line) {
    line.Single(Subject::AnyFile)
        .Add<ExplainOptions>("explain", "Tell where the lines of a file come from", Explain)(
            "FILE[:LINE]", &ExplainOptions::place, "The file, and one line of it");
}

}  // namespace ZET::Cli
