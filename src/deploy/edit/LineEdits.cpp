#include "deploy/edit/LineEdits.h"

#include <algorithm>

#include "deploy/edit/Edits.h"
#include "deploy/edit/FilePart.h"
#include "deploy/edit/LineRules.h"
#include "deploy/edit/PartEdit.h"
#include "deploy/edit/RestoreRules.h"
#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/targets/EditRules.h"
#include "text/FirstLine.h"
#include "text/LineEnds.h"
#include "text/Lines.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

/// True if the pattern selects an empty line of the file. The module's lookup returns the same for it as for
/// none.
bool SelectsEmptyLine(IZETCore& core, const std::string& bytes, const std::string& pattern) {
    if (!core.MatchRegEx(pattern, "", nullptr, 0)) return false;
    const std::vector<Text::TextLine> lines = Text::SplitLines(bytes);
    return std::any_of(lines.begin(), lines.end(),
                       [](const Text::TextLine& line) { return line.text.empty(); });
}

/// Where only the mark keeps the pattern from the first line, the line is there all the same.
void RequireNoMarkBefore(IZETCore& core, const std::string& path, std::string_view lines,
                         const std::string& pattern) {
    if (!lines.starts_with(Text::kByteOrderMark)) return;
    const std::string line(Text::TakeLine(lines).text);
    if (!Selects(core, pattern, line) && Selects(core, pattern, line.substr(Text::kByteOrderMark.size())))
        FailOfByteOrderMark(path, 1);
}

/// The text as the module gets it: a section has markers before it.
std::string GivenText(const PartEdit& edit, const EditOptions& options) {
    const std::string markers = std::string(ZETNoticeMarker) + "\n" + ZETCommentEndMarker + "\n";
    return (options.section ? markers : "") + std::string(edit.Part().lines);
}

/// Where only its carriage return keeps the pattern from a line, another one would be added to it.
void RequireNoReturnBehind(IZETCore& core, const std::string& path, const std::string& pattern,
                           const FilePart& part) {
    const std::size_t number = FirstSelectedWithoutReturn(core, pattern, part.lines);
    if (number == 0) return;
    throw Failure({.file = path,
                   .line = static_cast<int>(part.linesBefore + number),
                   .text = _("is selected only without the carriage return at its end"),
                   .remedy = _(kPatternForReturn)});
}

/// The line must be found again.
void RequireNoReturnBehindLine(IZETCore& core, const std::string& path, const std::string& pattern,
                               const std::string& line) {
    if (SelectsWithoutReturn(core, pattern, line))
        throw Failure({.file = path,
                       .text = _("PATTERN selects LINE only without the carriage return that this gets"),
                       .remedy = _(kPatternForReturn)});
}

std::optional<std::string> LineInSection(Deployment& product, const std::string& path,
                                         const std::string& pattern, const std::string& section) {
    const std::string bytes = ReadFileBytes(path);
    const FilePart part = PartOf(path, bytes, section);
    if (const auto line = FirstSelected(product.Core(), pattern, part.lines))
        return Text::WithoutLineEnd(*line);
    RequireNoMarkBefore(product.Core(), path, part.lines, pattern);
    RequireNoReturnBehind(product.Core(), path, pattern, part);
    return std::nullopt;
}

}  // namespace

std::optional<std::string> GetLine(Deployment& product, const std::string& path, const std::string& pattern,
                                   const std::optional<std::string>& section) {
    RequireSectionName(section);
    if (section) return LineInSection(product, path, pattern, *section);
    const auto file = OpenedFile(product, path, true);
    const std::string line = RemedyErrors(kSimplerExpression, [&] { return file->GetLine(pattern); });
    if (!line.empty()) return Text::WithoutLineEnd(line);
    const std::string bytes = ReadFileBytes(path);
    if (SelectsEmptyLine(product.Core(), bytes, pattern)) return line;
    RequireNoMarkBefore(product.Core(), path, bytes, pattern);
    RequireNoReturnBehind(product.Core(), path, pattern, PartOf(path, bytes, section));
    return std::nullopt;
}

FileOutcome SetLine(Deployment& product, const std::string& file, const std::string& pattern,
                    const std::string& line, const EditOptions& options) {
    RequireOneLine(line, "LINE");
    RequireNoMarker(line);
    RequirePattern(product.Core(), pattern);
    RequireSectionName(options.section);
    PartEdit edit(product, file, options);
    edit.ReadAll();
    RequireNoMarkBefore(product.Core(), edit.Path(), edit.Part().lines, pattern);
    const std::string selection =
        PatternForSet(product.Core(), edit.Path(), GivenText(edit, options), pattern);
    RequireNoReturnBehind(product.Core(), edit.Path(), selection, edit.Part());
    const NewLine given{selection, line};
    const LinesToReplace found =
        LookForLines(product.Core(), edit.Part().lines, edit.Part().linesBefore, given);
    if (!found.isAnySelected && found.same)
        return edit.LeaveUnchanged(Words("LINE stands in line %s already", std::to_string(*found.same)));
    if (!IsPartOfLine(found, options.noMarkers))
        JudgeWholeLine(product.Out(), edit.Path(), line, "LINE", options.force);
    JudgeParting(product.Out(), edit.Path(), PartedLines(found, given, options.noMarkers), options.force);
    if (!options.section) TellSections(product.Out(), edit.Path(), found);
    if (!found.isAnySelected) TellLineNotFoundAgain(product.Out(), edit.Path(), product.Core(), given);
    const std::string newLine = LineWithEnd(product.Out(), edit.Path(), edit.Text(), line);
    RequireNoReturnBehindLine(product.Core(), edit.Path(), selection, newLine);
    return edit.Make([&](IZETConfigFile& opened) { opened.SetLine(selection, newLine); });
}

FileOutcome RestoreLine(Deployment& product, const std::string& file, const std::string& pattern,
                        const EditOptions& options) {
    RequirePattern(product.Core(), pattern);
    RequireSectionName(options.section);
    PartEdit edit(product, file, options);
    edit.ReadAll();
    if (!HasSomethingToRestore(product.Core(), {edit.Path(), edit.Part().lines, pattern, pattern,
                                                options.allBlocks, edit.Part().linesBefore})) {
        RequireNoReturnBehind(product.Core(), edit.Path(), pattern, edit.Part());
        return edit.LeaveUnchanged(Words("nothing to restore for \"%s\"", pattern));
    }
    return edit.Make([&](IZETConfigFile& opened) { opened.RestoreLine(pattern); });
}

}  // namespace ZET::Deploy
