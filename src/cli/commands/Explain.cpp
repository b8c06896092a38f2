#include <algorithm>
#include <charconv>
#include <cstddef>
#include <optional>

#include "cli/ExitStatus.h"
#include "cli/Fields.h"
#include "cli/HistoryWords.h"
#include "cli/Session.h"
#include "cli/commands/Registrations.h"
#include "deploy/edit/FileExplanation.h"
#include "deploy/host/Failure.h"
#include "zet/ZETFiles.h"

namespace ZET::Cli {

namespace {

using Kind = Text::ExplainedLines::Kind;

struct ExplainOptions {
    std::string place;
};

/// FILE[:LINE], taken apart.
struct Place {
    std::string file;
    std::string line;  ///< digits; empty: the whole file
};

/// A file that is there wins over one whose name would be a part of the argument.
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
    throw UsageError(path + ": has no line " + place.line + " (it has " + std::to_string(count) +
                     (count == 1 ? " line)" : " lines)"));
}

std::string LineName(std::size_t number) {
    return "line " + std::to_string(number);
}

/// Puts an explanation into words.
class Teller {
  public:
    Teller(Session& session, const FileExplanation& file)
        : m_session(session), m_file(file), m_path(file.path), m_origin(file.origin) {}

    void TellFile() {
        Report& out = m_session.Out();
        out.Set("path", m_session.Product().HostPaths().RealName(m_path));
        out.Set("made_from", m_origin.isMade ? Value(m_origin.templateName) : Value(nullptr));
        out.Set("template_file",
                m_origin.templateFile.empty() ? Value(nullptr) : Value(m_origin.templateFile));
        out.Set("reserve", ReserveValue());
        out.Set("no_file_before", m_file.hadNoFile);
        out.Set("secret", m_origin.isPrivate);
    }

    void TellFileInWords() {
        std::string text = m_path + ": ";
        if (m_origin.isMade) {
            text += "made from the template " + TemplateName();
            if (m_file.HasUntracedLines()) text += ": " + WhyUntraced();
        } else if (m_origin.target) {
            text += "no notice says that it was made from the template " + m_origin.target->templateName +
                    ", whose target it is";
        } else {
            text += "not made from a template";
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
            text += "lines " + std::to_string(lines.first) + " to " + std::to_string(lines.last) + ": ";
        text += Describe(lines, isOneLine);
        m_session.Out().Line(text + Since(lines));
    }

  private:
    Value ReserveValue() const { return m_file.reserve.empty() ? Value(nullptr) : Value(m_file.reserve); }

    std::string ReserveText() const {
        if (!m_file.reserve.empty()) return "; before: " + m_file.reserve;
        return m_file.hadNoFile ? "; before: there was no such file" : "";
    }

    std::string TemplateName() const {
        if (m_origin.templateFile.empty() || m_origin.templateFile == m_origin.templateName)
            return m_origin.templateName;
        return m_origin.templateName + " (" + m_origin.templateFile + ")";
    }

    std::string WhyUntraced() const {
        return m_origin.templateFile.empty() ? "it is gone"
                                             : "the file was edited since, or the template changed";
    }

    std::string Shown(std::string_view text) const {
        return m_file.isHidden ? "(secret)" : "\"" + std::string(text) + "\"";
    }

    std::string Describe(const Text::ExplainedLines& lines, bool isOneLine) const {
        switch (lines.kind) {
            case Kind::Own:
                return "the administrator's own" + (isOneLine ? ReserveText() : "");
            case Kind::Gap:
                return "empty line, put there before the managed block that was appended after it";
            case Kind::FormerLine:
                return "kept former line of the managed block that begins in " + LineName(lines.block) +
                       ": " + Shown(lines.formerText) + FromTemplateLine(lines);
            case Kind::LoneFormerLine:
                return "kept former line: " + Shown(lines.formerText) + FromTemplateLine(lines) +
                       "; its block was taken out or lost; " + HowToRestore(lines.formerText) +
                       " brings it back";
            case Kind::Block:
                return DescribeBlock(lines);
            case Kind::Notice:
                return std::string("the notice") +
                       (lines.isClosed ? "" : ", without an end marker (see doctor)");
            case Kind::TemplateComment:
                return std::string("template comment") +
                       (lines.isClosed ? "" : ", without an end marker (see doctor)");
            case Kind::FromTemplate:
                return "from " + TemplateLines(lines) + PlaceholderText(lines) +
                       (isOneLine ? ReserveText() : "");
            case Kind::Differing:
                return "in the place of " + TemplateLines(lines) +
                       ", but not made from it: the file was edited since, or the template changed" +
                       (isOneLine ? ReserveText() : "");
            case Kind::Untraced:
                break;
        }
        return "cannot be traced to the template " + TemplateName() + ": " + WhyUntraced() +
               (isOneLine ? ReserveText() : "");
    }

    std::string DescribeBlock(const Text::ExplainedLines& lines) const {
        std::string text = "managed block";
        if (!lines.isClosed) text += ", without an end marker (see doctor)";
        text += ": ";
        text += lines.content.empty() ? "empty" : Shown(lines.content.front());
        if (lines.content.size() > 1)
            text += " and " + std::to_string(lines.content.size() - 1) + " more lines";
        if (lines.formerLine == 0) return text + "; appended, nothing stood there before";
        return text + "; before: " + Shown(lines.formerText) + ", kept in " + LineName(lines.formerLine) +
               FromTemplateLine(lines);
    }

    std::string FromTemplateLine(const Text::ExplainedLines& lines) const {
        if (lines.templateLine == 0) return "";
        return ", from " + LineName(lines.templateLine) + " of the template " + m_origin.templateName +
               PlaceholderText(lines);
    }

    std::string TemplateLines(const Text::ExplainedLines& lines) const {
        const std::size_t count = lines.last - lines.first;
        const std::string numbers = count == 0 ? LineName(lines.templateLine)
                                               : "lines " + std::to_string(lines.templateLine) + " to " +
                                                     std::to_string(lines.templateLine + count);
        return numbers + " of the template " + m_origin.templateName;
    }

    static std::string PlaceholderText(const Text::ExplainedLines& lines) {
        std::string text;
        for (const std::string& placeholder : lines.placeholders)
            text += (text.empty() ? " with " : ", ") + placeholder;
        return text;
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

    /// What the newest of the lines came with; none: they are older than what is known.
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
        return (isOfAll ? "; " : "; in parts ") + SinceText(*newest);
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
            {"reserve", ReserveValue()}};
    }

    template <typename Placeholders>
    static List NamesOf(const Placeholders& placeholders) {
        List names;
        for (const std::string& placeholder : placeholders)
            names.emplace_back(NameOfPlaceholder(placeholder));
        return names;
    }

    static List TextsOf(const std::vector<std::string_view>& texts) {
        List list;
        for (const std::string_view text : texts)
            list.emplace_back(std::string(text));
        return list;
    }

    static Value Number(std::size_t number) {
        return number == 0 ? Value(nullptr) : Value(static_cast<std::int64_t>(number));
    }

    Session& m_session;
    const FileExplanation& m_file;
    const std::string& m_path;
    const FileOrigin& m_origin;
    bool m_isLeftOut = false;  ///< some text that would have been told
};

/// Gives the document the fields that it has even if nobody could look.
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
