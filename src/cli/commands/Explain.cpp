#include <charconv>
#include <cstddef>

#include "cli/ExitStatus.h"
#include "cli/ExplanationWords.h"
#include "cli/Fields.h"
#include "cli/HistoryWords.h"
#include "cli/Session.h"
#include "cli/Translation.h"
#include "cli/commands/Registrations.h"
#include "deploy/edit/FileExplanation.h"
#include "deploy/host/Failure.h"
#include "deploy/state/ParameterNames.h"
#include "zet/ZETFiles.h"

namespace ZET::Cli {

namespace {

using Kind = Text::ExplainedLines::Kind;

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
        : m_session(session),
          m_file(file),
          m_path(file.path),
          m_origin(file.origin),
          m_words(file, session.Asked().program) {}

    void TellFile() {
        Report& out = m_session.Out();
        out.Set("path", m_session.Product().HostPaths().RealName(m_path));
        out.Set("made_from", m_origin.isMade ? Value(m_origin.templateName) : Value(nullptr));
        out.Set("template_file", TextOrNull(m_origin.templateFile));
        out.Set("reserve", TextOrNull(m_file.reserve));
        out.Set("no_file_before", m_file.hadNoFile);
        out.Set("secret", m_origin.isPrivate);
    }

    void TellFileInWords() { m_session.Out().Line(m_words.OfFile()); }

    void TellWhatIsHidden() {
        if (m_isLeftOut)
            m_session.Out().Remark(m_path + ": " + m_session.Product().HostSecrets().Excuse(m_path));
    }

    void Tell(const Text::ExplainedLines& lines, std::size_t line) {
        m_session.Out().Add("regions", ToFields(lines));
        m_isLeftOut = m_isLeftOut || (m_file.isHidden && (HasFormerText(lines) || !lines.content.empty()));
        m_session.Out().Line(m_words.OfLines(lines, line));
    }

  private:
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
            {"since", SinceValue(NewestAge(m_file, lines))},
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
    const ExplanationWords m_words;
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
