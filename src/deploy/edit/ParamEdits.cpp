#include "deploy/edit/ParamEdits.h"

#include <optional>
#include <set>

#include "deploy/edit/Edits.h"
#include "deploy/edit/FilePart.h"
#include "deploy/edit/PartEdit.h"
#include "deploy/edit/RestoreRules.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Words.h"
#include "deploy/targets/EditRules.h"
#include "deploy/targets/ParamRules.h"
#include "posix/ByteBlock.h"
#include "text/Continuation.h"
#include "text/LineEnds.h"
#include "text/Lines.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

/// One edit of a parameter, with what the file or the section says about it.
class ParamEdit : public PartEdit {
  public:
    /// What the edit needs to see of the text: line after line, or all of it at once.
    enum class View { Lines, Whole };

    ParamEdit(Deployment& product, const std::string& file, const std::string& name,
              const EditOptions& options, View view)
        : PartEdit(product, file, options), m_core(product.Core()), m_name(name), m_look(name) {
        if (view == View::Lines && !options.section && IsLiteralName(name)) {
            ReadLines([&](std::string_view lines, std::size_t before) { m_look.Take(lines, before); });
        } else {
            ReadAll();
            m_look.Take(Part().lines, Part().linesBefore);
        }
    }

    FoundParam Found() const { return {Path(), m_name, m_look}; }

    void RequireLiteral(const std::string& opening) const {
        RequireLiteralName(m_core, Path(), Part().lines, opening, m_name, Part().linesBefore);
    }

  private:
    IZETCore& m_core;
    const std::string& m_name;
    Text::ParamLook m_look;
};

/// Finds the line that the module would take for a parameter, in a text that comes in pieces of whole lines.
/// The name must be literal, so that the core is asked about few lines only.
class LookToGet {
  public:
    LookToGet(IZETCore& core, const std::string& name)
        : m_core(core), m_start(name + "="), m_pattern(ZETLookupOpening + m_start) {}

    void Take(std::string_view lines) {
        m_mayHaveSections = m_mayHaveSections || lines.find('[') != std::string_view::npos;
        while (!m_line && !lines.empty())
            TakeNext(lines);
    }

    const std::optional<std::string>& Line() const { return m_line; }
    bool MayHaveSections() const { return m_mayHaveSections; }

  private:
    void TakeNext(std::string_view& lines) {
        const std::size_t place = FindBytes(lines, m_start);
        if (place == std::string_view::npos) {
            lines = {};
            return;
        }
        lines.remove_prefix(Text::LinesBefore(lines, place).size());
        m_line = FirstSelected(m_core, m_pattern, lines.substr(0, lines.find('\n')));
        Text::TakeLine(lines);
    }

    IZETCore& m_core;
    const std::string m_start;
    const std::string m_pattern;
    std::optional<std::string> m_line;
    bool m_mayHaveSections = false;
};

std::optional<std::string> LineOf(Deployment& product, const std::string& path, const std::string& name,
                                  const std::optional<std::string>& section) {
    const std::string pattern = ZETLookupOpening + name + "=";
    if (section) {
        const std::string bytes = ReadFileBytes(path);
        return FirstSelected(product.Core(), pattern, PartOf(path, bytes, section).lines);
    }
    // The lookup by name does not tell an empty value from a parameter that is not there.
    const std::string line = OpenedFile(product, path, true)->GetLine(pattern);
    return line.empty() ? std::nullopt : std::optional(line);
}

Text::ParamLook LookForParam(const std::string& path, const std::string& name,
                             const std::optional<std::string>& section) {
    Text::ParamLook look(name);
    if (!section) {
        std::size_t before = 0;
        ReadChunks(path, [&](std::string_view lines) {
            look.Take(lines, before);
            before += Text::CountLines(lines);
        });
        return look;
    }
    const std::string bytes = ReadFileBytes(path);
    const FilePart part = PartOf(path, bytes, section);
    look.Take(part.lines, part.linesBefore);
    return look;
}

/// The lines that set the parameter, each of them once.
std::set<std::string> SettingLines(IZETCore& core, std::string_view lines, const std::string& pattern) {
    std::set<std::string> setting;
    for (const Text::TextLine& line : Text::SplitLines(lines)) {
        std::string text(line.text);
        if (core.MatchRegEx(pattern, text, nullptr, 0)) setting.insert(std::move(text));
    }
    return setting;
}

}  // namespace

std::optional<std::string> GetParam(Deployment& product, const std::string& path, const std::string& name,
                                    const std::optional<std::string>& section) {
    RequireSectionName(section);
    if (!IsLiteralName(name))
        RequireLiteralName(product.Core(), path, ReadFileBytes(path), ZETLookupOpening, name);
    LookToGet look(product.Core(), name);
    if (!section) ReadChunks(path, [&](std::string_view lines) { look.Take(lines); });
    const bool isFound = !section && IsLiteralName(name);
    const auto line = isFound ? look.Line() : LineOf(product, path, name, section);
    if (!line) {
        const Text::ParamLook all = LookForParam(path, name, section);
        RequireNoMarkBefore({path, name, all});
        RequireNoBlanks({path, name, all}, "line get", _("prints it"));
        return std::nullopt;
    }
    if (look.MayHaveSections()) RequireOneSectionToGet({path, name, LookForParam(path, name, section)});
    return Text::WithoutLineEnd(line->substr(line->find('=') + 1));
}

FileOutcome SetParam(Deployment& product, const std::string& file, const std::string& name,
                     const std::string& value, const EditOptions& options) {
    RequireParamName(name);
    RequireOneLine(value, "VALUE");
    RequireSectionName(options.section);
    ParamEdit edit(product, file, name, options, ParamEdit::View::Lines);
    edit.RequireLiteral(ZETEditOpening);
    RequireSettable(edit.Found(), options.section.has_value());
    // What a line that goes on already is replaced by may go on, too.
    const bool goesOn = options.noMarkers && !LinesPartedBySet(edit.Found(), true, false).empty();
    if (!options.force || !goesOn) JudgeWholeLine(product.Out(), edit.Path(), value, "VALUE", options.force);
    JudgeParting(product.Out(), edit.Path(),
                 LinesPartedBySet(edit.Found(), options.noMarkers, Text::GoesOn(value)), options.force);
    TellLinesToSet(product.Out(), edit.Found(), _("\"line set\" with a PATTERN sets one"));
    const std::string line = LineWithEnd(product.Out(), edit.Path(), edit.Text(), value);
    return edit.Make([&](IZETConfigFile& opened) { opened.SetParamValue(name, line); });
}

FileOutcome UnsetParam(Deployment& product, const std::string& file, const std::string& name,
                       const EditOptions& options) {
    RequireParamName(name);
    RequireSectionName(options.section);
    ParamEdit edit(product, file, name, options, ParamEdit::View::Whole);
    edit.RequireLiteral(ZETLookupOpening);
    RequireNoMarkBefore(edit.Found());
    RequireNoBlanks(edit.Found(), "line set", _("comments it out, with a LINE that begins with \"#\""));
    if (!options.section) RequireOneSectionToGet(edit.Found());
    JudgeParting(product.Out(), edit.Path(), LinesPartedByUnset(edit.Found()), options.force);
    const std::string pattern = ZETLookupOpening + name + "=";
    const std::set<std::string> lines = SettingLines(product.Core(), edit.Part().lines, pattern);
    if (lines.empty()) return edit.LeaveUnchanged(Words("no line sets \"%s\"", name));
    return edit.Make([&](IZETConfigFile& opened) {
        if (lines.size() == 1) return opened.SetLine(pattern, "#" + *lines.begin());
        for (const std::string& line : lines)
            opened.SetLine("^" + Escaped(line) + "\\z", "#" + line);
    });
}

FileOutcome RestoreParam(Deployment& product, const std::string& file, const std::string& name,
                         const EditOptions& options) {
    RequireParamName(name);
    RequireSectionName(options.section);
    ParamEdit edit(product, file, name, options, ParamEdit::View::Whole);
    edit.RequireLiteral(std::string("^") + ZETFormerLinePrefix + ZETRestoreOpening);
    if (!options.section && !options.allBlocks) RequireOneSectionToRestore(edit.Found());
    if (!HasSomethingToRestore(product.Core(),
                               {edit.Path(), edit.Part().lines, ZETRestoreOpening + name + "=",
                                ZETEditOpening + name + "=", options.allBlocks, edit.Part().linesBefore}))
        return edit.LeaveUnchanged(Words("nothing to restore for \"%s\"", name));
    return edit.Make([&](IZETConfigFile& opened) { opened.RestoreParamValue(name); });
}

}  // namespace ZET::Deploy
