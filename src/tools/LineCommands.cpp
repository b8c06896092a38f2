#include <algorithm>

#include "Commands.h"
#include "EditRules.h"
#include "Edits.h"
#include "FileBytes.h"
#include "FileChange.h"
#include "LineEnds.h"
#include "Lines.h"
#include "Remedy.h"
#include "RestoreRules.h"

namespace ZET {

namespace {

/// Whether the first line that the pattern selects can be an empty one.
bool SelectsEmptyLine(Session& session, const std::string& path, const std::string& pattern) {
    if (!session.Core().MatchRegEx(pattern, "", nullptr, 0)) return false;
    const std::string bytes = ReadFileBytes(path);
    const std::vector<TextLine> lines = SplitLines(bytes);
    return std::any_of(lines.begin(), lines.end(), [](const TextLine& line) { return line.text.empty(); });
}

}  // namespace

int RunLineGet(Session& session) {
    const std::string& pattern = session.Asked().pattern;
    RequirePattern(session.Core(), pattern);
    session.Out().Set("file", session.Asked().file);
    session.Out().Set("pattern", pattern);
    session.Out().Set("found", nullptr);  // as long as nobody could look
    session.Out().Set("line", nullptr);
    const std::string path = FileToShow(session, session.Asked().file);
    const auto file = OpenedFile(session, path, true);
    const std::string line = RemedyErrors(kSimplerExpression, [&] { return file->GetLine(pattern); });
    std::optional<std::string> found;
    if (!line.empty() || SelectsEmptyLine(session, path, pattern)) found = WithoutLineEnd(line);
    return ReportLookup(session, path + ": has no line with \"" + pattern + "\"", "line", found);
}

int RunLineSet(Session& session) {
    const Request& asked = session.Asked();
    RequirePattern(session.Core(), asked.pattern);
    RequireOneLine(asked.text, "LINE");
    RequireNoMarker(asked.text);
    FileChange change(session, asked.file);
    RequireNoTarget(session, change.Path());
    const std::string bytes = ReadFileBytes(change.Path());
    const TextToEdit text = LookAtBlocks(session, change.Path(), bytes);
    const std::string pattern = PatternForSet(session.Core(), change.Path(), bytes, asked.pattern);
    RequireRoomForNotice(session, change.Path(), text);
    const std::string line = LineToSet(session, change.Path(), text, asked.text);
    return change.Make(Edit(session, [&](IZETConfigFile& file) { file.SetLine(pattern, line); }),
                       asked.noBackup);
}

int RunLineRestore(Session& session) {
    const Request& asked = session.Asked();
    RequirePattern(session.Core(), asked.pattern);
    FileChange change(session, asked.file);
    RequireNoTarget(session, change.Path());
    const std::string bytes = ReadFileBytes(change.Path());
    const TextToEdit text = LookAtBlocks(session, change.Path(), bytes);
    if (!HasSomethingToRestore(session.Core(),
                               {change.Path(), bytes, asked.pattern, asked.pattern, asked.allBlocks}))
        return change.LeaveUnchanged("nothing to restore for \"" + asked.pattern + "\"");
    RequireRoomForNotice(session, change.Path(), text);
    return change.Make(Edit(session, [&](IZETConfigFile& file) { file.RestoreLine(asked.pattern); }),
                       asked.noBackup);
}

}  // namespace ZET
