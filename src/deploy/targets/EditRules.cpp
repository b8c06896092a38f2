#include "deploy/targets/EditRules.h"

#include <algorithm>
#include <set>

#include "deploy/host/Failure.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/state/ParameterNames.h"
#include "text/Lines.h"
#include "text/ManagedText.h"
#include "text/Markers.h"
#include "zet/ZETErrors.h"
#include "zet/ZETFormat.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {

namespace {

constexpr char kSpecial[] = "\\^$.|?*+()[]{}";

bool Matches(IZETCore& core, const std::string& pattern, const std::string& line) {
    return core.MatchRegEx(pattern, line, nullptr, 0);
}

/// Whether the line has the parameter of exactly that name, even if it is commented out or kept as a former
/// line.
bool HoldsLiterally(std::string_view line, const std::string& name) {
    if (line.starts_with(ZETFormerLinePrefix))
        line.remove_prefix(std::string_view(ZETFormerLinePrefix).size());
    line.remove_prefix(std::min(line.find_first_not_of('#'), line.size()));
    line.remove_prefix(std::min(line.find_first_not_of(Text::kBlanks), line.size()));
    return line.starts_with(name + "=");
}

/// The beginnings of lines that the pattern selects though the system keeps order by them, as parts of a
/// regular expression.
std::set<std::string> SelectedOwnLines(IZETCore& core, const Text::ManagedText& text,
                                       const std::string& pattern) {
    std::set<std::string> selected;
    for (std::size_t number = 1; number <= text.LineCount(); ++number) {
        const std::string_view line = text.Line(number).text;
        const Text::Marker marker = Text::MarkerOf(line);
        // A notice without an end does not count: what follows may be the administrator's.
        if (marker == Text::Marker::None && !text.RegionOf(number).IsWholeNotice()) continue;
        if (!Selects(core, pattern, std::string(line))) continue;
        selected.insert(marker == Text::Marker::None ? Escaped(line) + "$"
                                                     : Escaped(Text::MarkerText(marker)));
    }
    return selected;
}

}  // namespace

void RequireOneLine(const std::string& text, const std::string& what) {
    if (text.find('\n') != std::string::npos)
        throw UsageError(Words("%s holds a line feed (a line cannot; give the text without it)", what));
}

void RequireNoMarker(const std::string& line) {
    const Text::Marker marker = Text::MarkerOf(line);
    if (marker == Text::Marker::None) return;
    throw UsageError(Words(
        "LINE begins with \"%s\", which marks lines of the system itself (begin it with something else)",
        Text::MarkerText(marker)));
}

bool Selects(IZETCore& core, const std::string& pattern, const std::string& line) {
    return RemedyErrors(kSimplerExpression, [&] { return Matches(core, pattern, line); });
}

std::optional<std::string> FirstSelected(IZETCore& core, const std::string& pattern, std::string_view lines) {
    for (const Text::TextLine& line : Text::SplitLines(lines)) {
        std::string text(line.text);
        if (Selects(core, pattern, text)) return text;
    }
    return std::nullopt;
}

bool SelectsWithoutReturn(IZETCore& core, const std::string& pattern, const std::string& line) {
    return line.ends_with('\r') && !Selects(core, pattern, line) &&
           Selects(core, pattern, line.substr(0, line.size() - 1));
}

std::size_t FirstSelectedWithoutReturn(IZETCore& core, const std::string& pattern, std::string_view lines) {
    if (lines.find('\r') == std::string_view::npos) return 0;
    std::size_t number = 0;
    for (const Text::TextLine& line : Text::SplitLines(lines)) {
        ++number;
        if (Text::MarkerOf(line.text) == Text::Marker::None &&
            SelectsWithoutReturn(core, pattern, std::string(line.text)))
            return number;
    }
    return 0;
}

void RequirePattern(IZETCore& core, const std::string& pattern) {
    if (pattern.empty()) throw UsageError(_("PATTERN is empty (give a regular expression)"));
    try {
        Matches(core, pattern, "");
    } catch (const EZETHostError& error) {
        throw FailureOf(error);
    } catch (const EZETError& error) {
        throw UsageError(std::string("PATTERN: ") + FailureOf(error, _("correct the expression")).what());
    }
}

void RequireParamName(const std::string& name) {
    if (name.empty()) throw UsageError(_("NAME is empty (give the name of a parameter)"));
    RequireOneLine(name, "NAME");
    if (name.find('=') != std::string::npos)
        throw UsageError(Words("NAME \"%s\" holds \"=\" (give name and value apart)", name));
    if (name.front() == '#' || Text::kBlanks.find(name.front()) != std::string_view::npos)
        throw UsageError(Words("NAME \"%s\" begins with \"#\" or a blank (give the name alone)", name));
}

std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        if (std::string_view(kSpecial).find(c) != std::string_view::npos) escaped += '\\';
        escaped += c;
    }
    return escaped;
}

void RequireSectionName(const std::optional<std::string>& section) {
    if (!section || section->empty()) return;
    RequireOneLine(*section, "SECTION");
    if (section->find_first_of("[]") != std::string::npos)
        throw UsageError(
            Words("SECTION \"%s\" holds brackets (give the name that stands in them)", *section));
    if (Text::kBlanks.find(section->front()) != std::string_view::npos ||
        Text::kBlanks.find(section->back()) != std::string_view::npos)
        throw UsageError(
            Words("SECTION \"%s\" begins or ends with a blank (give the name without it)", *section));
}

void RequireOptionName(const std::string& name, const std::string& what) {
    if (!IsParameterName(name)) {
        throw UsageError(
            Words("%s \"%s\" is no name of a parameter (use letters, digits and \"_\", no digit first)", what,
                  name));
    }
}

void FailOfByteOrderMark(const std::string& path, std::size_t line) {
    throw Failure({.file = path,
                   .line = static_cast<int>(line),
                   .text = _("begins with a byte order mark, behind which nothing is found"),
                   .remedy = _("save the file without the mark")});
}

void JudgeParting(Observer& observer, const std::string& path, const std::set<std::size_t>& lines,
                  bool isForced) {
    for (const std::size_t line : lines) {
        Problem problem = {
            .file = path,
            .line = static_cast<int>(line),
            .text = _("ends with \"\\\" and goes on in the next line, from which the edit would part it"),
            .remedy = _("edit the two by hand; --force parts them")};
        if (!isForced) throw Failure(problem);
        problem.text = _("ends with \"\\\" and goes on in the next line, from which the edit parts it");
        problem.remedy = _("see that each of the two is right without the other");
        observer.Warning(problem.Describe());
    }
}

bool IsLiteralName(const std::string& name) {
    return name.find_first_of(kSpecial) == std::string::npos;
}

void RequireLiteralName(IZETCore& core, const std::string& path, std::string_view text,
                        const std::string& opening, const std::string& name, std::size_t linesBefore) {
    if (IsLiteralName(name)) return;
    const std::string pattern = opening + name + "=";
    try {
        if (!Matches(core, "^" + name + "=", name + "="))
            throw UsageError(
                Words("NAME \"%s\" does not select itself (NAME is part of a regular expression: use "
                      "\"line\" with a PATTERN that says what is meant)",
                      name));
    } catch (const EZETError& error) {
        throw UsageError(
            Words("NAME \"%s\": %s (NAME is part of a regular expression: use \"line\" with a PATTERN that "
                  "says what is meant)",
                  name, error.what()));
    }
    std::size_t number = linesBefore;
    for (const Text::TextLine& line : Text::SplitLines(text)) {
        ++number;
        if (HoldsLiterally(line.text, name) || !Selects(core, pattern, std::string(line.text))) continue;
        throw UsageError(
            Words("NAME \"%s\" also selects line %s of %s, which does not hold it (NAME is part of a regular "
                  "expression: use \"line\" with a PATTERN that says what is meant)",
                  name, std::to_string(number), path));
    }
}

std::string PatternForSet(IZETCore& core, const std::string& path, std::string_view text,
                          const std::string& pattern) {
    // Most files have no line of the system's.
    if (text.find(Text::kMarkerStart) == std::string_view::npos) return pattern;
    const std::set<std::string> ownLines = SelectedOwnLines(core, Text::ManagedText(text), pattern);
    if (ownLines.empty()) return pattern;
    std::string guarded = "^(?!";
    for (const std::string& ownLine : ownLines)
        guarded += (ownLine == *ownLines.begin() ? "" : "|") + ownLine;
    guarded += ").*?(?:" + pattern + ")";
    try {
        Matches(core, guarded, "");
    } catch (const EZETError&) {
        throw UsageError(
            Words("PATTERN \"%s\" also selects lines of %s that the system wrote to keep order in it (give a "
                  "pattern that begins with \"^\")",
                  pattern, path));
    }
    return guarded;
}

}  // namespace ZET::Deploy
