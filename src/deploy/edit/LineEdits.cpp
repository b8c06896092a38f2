#include "deploy/edit/LineEdits.h"

#include <algorithm>

#include "deploy/edit/Edits.h"
#include "deploy/edit/FileEdit.h"
#include "deploy/edit/RestoreRules.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Remedy.h"
#include "deploy/targets/EditRules.h"
#include "text/LineEnds.h"
#include "text/Lines.h"

namespace ZET::Deploy {

namespace {

/// Whether the first line that the pattern selects can be an empty one.
bool SelectsEmptyLine(Deployment& product, const std::string& path, const std::string& pattern) {
    if (!product.Core().MatchRegEx(pattern, "", nullptr, 0)) return false;
    const std::string bytes = ReadFileBytes(path);
    const std::vector<Text::TextLine> lines = Text::SplitLines(bytes);
    return std::any_of(lines.begin(), lines.end(),
                       [](const Text::TextLine& line) { return line.text.empty(); });
}

}  // namespace

std::optional<std::string> GetLine(Deployment& product, const std::string& path, const std::string& pattern) {
    const auto file = OpenedFile(product, path, true);
    const std::string line = RemedyErrors(kSimplerExpression, [&] { return file->GetLine(pattern); });
    if (line.empty() && !SelectsEmptyLine(product, path, pattern)) return std::nullopt;
    return Text::WithoutLineEnd(line);
}

FileOutcome SetLine(Deployment& product, const std::string& file, const std::string& pattern,
                    const std::string& line, const EditOptions& options) {
    RequireWholeFile(options);
    RequirePattern(product.Core(), pattern);
    RequireOneLine(line, "LINE");
    RequireNoMarker(line);
    FileEdit edit(product, file);
    RequireNoTarget(product, edit.Path(), options);
    const std::string bytes = ReadFileBytes(edit.Path());
    const Text::TextToEdit text = LookAtBlocks(product, {file, edit.Path()}, bytes);
    const std::string selection = PatternForSet(product.Core(), edit.Path(), bytes, pattern);
    RequireRoomForNotice(edit.Path(), text, options);
    const std::string newLine = LineToSet(product.Out(), edit.Path(), text, line);
    return edit.Make(
        Edit(product, options, [&](IZETConfigFile& opened) { opened.SetLine(selection, newLine); }),
        options.noBackup);
}

FileOutcome RestoreLine(Deployment& product, const std::string& file, const std::string& pattern,
                        const EditOptions& options) {
    RequireWholeFile(options);
    RequirePattern(product.Core(), pattern);
    FileEdit edit(product, file);
    RequireNoTarget(product, edit.Path(), options);
    const std::string bytes = ReadFileBytes(edit.Path());
    const Text::TextToEdit text = LookAtBlocks(product, {file, edit.Path()}, bytes);
    if (!HasSomethingToRestore(product.Core(), {edit.Path(), bytes, pattern, pattern, options.allBlocks}))
        return edit.LeaveUnchanged("nothing to restore for \"" + pattern + "\"");
    RequireRoomForNotice(edit.Path(), text, options);
    return edit.Make(Edit(product, options, [&](IZETConfigFile& opened) { opened.RestoreLine(pattern); }),
                     options.noBackup);
}

}  // namespace ZET::Deploy
