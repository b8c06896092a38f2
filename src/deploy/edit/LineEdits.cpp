#include "deploy/edit/LineEdits.h"

#include <algorithm>
#include <functional>

#include "deploy/edit/CommitGuard.h"
#include "deploy/edit/Edits.h"
#include "deploy/edit/FileEdit.h"
#include "deploy/edit/FilePart.h"
#include "deploy/edit/RestoreRules.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/targets/EditRules.h"
#include "text/LineEnds.h"
#include "text/Lines.h"
#include "zet/ZETFormat.h"

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

std::optional<std::string> LineInSection(Deployment& product, const std::string& path,
                                         const std::string& pattern, const std::string& section) {
    const std::string bytes = ReadFileBytes(path);
    for (const Text::TextLine& line : Text::SplitLines(PartOf(path, bytes, section).lines)) {
        std::string text(line.text);
        if (RemedyErrors(kSimplerExpression,
                         [&] { return product.Core().MatchRegEx(pattern, text, nullptr, 0); }))
            return Text::WithoutLineEnd(text);
    }
    return std::nullopt;
}

/// One edit of the lines that a pattern chooses, in a file or in one section of it.
class LineEdit {
  public:
    LineEdit(Deployment& product, const std::string& file, const std::string& pattern,
             const EditOptions& options)
        : m_product(product),
          m_options(options),
          m_edit(product, Required(product, file, pattern, options)),
          m_guard(product, Path(), options) {
        m_bytes = ReadFileBytes(Path());
        m_text = LookAtBlocks(product, {file, Path()}, m_bytes);
        m_part = PartOf(Path(), m_bytes, options.section);
    }

    const std::string& Path() const { return m_edit.Path(); }
    const Text::TextToEdit& Text() const { return m_text; }
    const FilePart& Part() const { return m_part; }
    FileOutcome LeaveUnchanged(const std::string& remark) const { return m_edit.LeaveUnchanged(remark); }

    /// What the module gets of the file: a section comes with markers before it.
    std::string GivenText() const {
        const std::string markers = std::string(ZETNoticeMarker) + "\n" + ZETCommentEndMarker + "\n";
        return m_options.section ? markers + std::string(m_part.lines) : m_bytes;
    }

    FileOutcome Make(const std::function<void(IZETConfigFile& file)>& operation) {
        RequireRoomForNotice(Path(), m_text, m_options);
        return m_edit.Make(EditOfPart(m_product, m_options, Path(), m_bytes, m_part, operation),
                           m_options.noBackup, m_guard.OfLines());
    }

  private:
    /// The words are looked at before the file is.
    static const std::string& Required(Deployment& product, const std::string& file,
                                       const std::string& pattern, const EditOptions& options) {
        RequirePattern(product.Core(), pattern);
        RequireSectionName(options.section);
        return file;
    }

    Deployment& m_product;
    const EditOptions& m_options;
    FileEdit m_edit;
    CommitGuard m_guard;
    std::string m_bytes;
    Text::TextToEdit m_text;
    FilePart m_part;
};

}  // namespace

std::optional<std::string> GetLine(Deployment& product, const std::string& path, const std::string& pattern,
                                   const std::optional<std::string>& section) {
    RequireSectionName(section);
    if (section) return LineInSection(product, path, pattern, *section);
    const auto file = OpenedFile(product, path, true);
    const std::string line = RemedyErrors(kSimplerExpression, [&] { return file->GetLine(pattern); });
    if (line.empty() && !SelectsEmptyLine(product, path, pattern)) return std::nullopt;
    return Text::WithoutLineEnd(line);
}

FileOutcome SetLine(Deployment& product, const std::string& file, const std::string& pattern,
                    const std::string& line, const EditOptions& options) {
    RequireOneLine(line, "LINE");
    RequireNoMarker(line);
    LineEdit edit(product, file, pattern, options);
    const std::string selection = PatternForSet(product.Core(), edit.Path(), edit.GivenText(), pattern);
    const std::string newLine = LineToSet(product.Out(), edit.Path(), edit.Text(), line);
    return edit.Make([&](IZETConfigFile& opened) { opened.SetLine(selection, newLine); });
}

FileOutcome RestoreLine(Deployment& product, const std::string& file, const std::string& pattern,
                        const EditOptions& options) {
    LineEdit edit(product, file, pattern, options);
    if (!HasSomethingToRestore(product.Core(), {edit.Path(), edit.Part().lines, pattern, pattern,
                                                options.allBlocks, edit.Part().linesBefore}))
        return edit.LeaveUnchanged(Words("nothing to restore for \"%s\"", pattern));
    return edit.Make([&](IZETConfigFile& opened) { opened.RestoreLine(pattern); });
}

}  // namespace ZET::Deploy
