#include "deploy/targets/LinesPlan.h"

#include <algorithm>
#include <set>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileInPlace.h"
#include "deploy/host/FileMode.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/StagedFile.h"
#include "deploy/host/Words.h"
#include "deploy/state/Language.h"
#include "deploy/state/LostOriginal.h"
#include "deploy/state/Overrides.h"
#include "deploy/state/OwnText.h"
#include "deploy/state/Replacement.h"
#include "deploy/targets/BareLines.h"
#include "deploy/targets/EditRules.h"
#include "deploy/targets/EditedBlocks.h"
#include "deploy/targets/FormerTarget.h"
#include "deploy/targets/ListedEditStates.h"
#include "deploy/targets/ListedLinesCheck.h"
#include "deploy/targets/ParamRules.h"
#include "deploy/targets/ShownDiff.h"
#include "text/Lines.h"
#include "text/ManagedText.h"
#include "text/Sections.h"
#include "text/WithoutBlocks.h"

namespace ZET::Deploy {

namespace {

bool HasBlocks(std::string_view text) {
    const Text::ManagedText managed(text);
    return std::any_of(managed.Regions().begin(), managed.Regions().end(), [](const auto& region) {
        return region.kind == Text::RegionKind::Block || region.kind == Text::RegionKind::FormerLine;
    });
}

bool HaveSameSettings(const std::string& one, const std::string& other) {
    const auto settingsOf = [](const std::string& text) {
        std::vector<Text::TextLine> lines = Text::SplitLines(text);
        std::erase_if(lines, [](const Text::TextLine& line) { return !Text::IsSetting(line.text); });
        return lines;
    };
    const std::vector<Text::TextLine> ones = settingsOf(one);
    const std::vector<Text::TextLine> others = settingsOf(other);
    return std::equal(ones.begin(), ones.end(), others.begin(), others.end(),
                      [](const auto& left, const auto& right) { return left.text == right.text; });
}

/// The number of the first line that was changed.
int NumberOf(const LineToSet& line, const std::vector<LineInPlace>& places, IZETCore& core) {
    for (const LineInPlace& place : places)
        if (place.text != line.line && core.MatchRegEx(line.pattern, place.text, nullptr, 0))
            return static_cast<int>(place.number);
    return 0;
}

}  // namespace

LinesPlan::LinesPlan(Deployment& product, const KnownFiles& known, const Staging& staging, OnEdit onEdit)
    : m_product(product), m_known(known), m_onEdit(onEdit) {
    ListedLinesCheck check(product, m_problems);
    ListedLines found = FindListedLines(product, known, staging);
    m_problems = std::move(found.problems);
    for (FileWithLines& file : found.files) {
        product.RequireGoOn();
        try {
            if (file.isThere && check.IsSound(file)) Plan(std::move(file), staging);
        } catch (const Failure& failure) {
            m_problems.push_back(ProblemOf(file.path, failure));
        }
    }
}

void LinesPlan::Plan(FileWithLines file, const Staging& staging) {
    const std::string rest = WithLostLines(file, WithoutFormerLines(file));
    PlannedLines planned{.file = std::move(file), .staged = ""};
    FileWithLines& found = planned.file;
    planned.isTakenBack = rest != found.text;
    if (found.lines.empty() && planned.isTakenBack && !HasBlocks(rest)) {
        m_emptied.push_back(found.path);
        return;
    }
    JudgeEdited(planned);
    if (found.original) JudgeEditedTarget(planned);
    const std::string staged = staging.PathOf("edits/" + std::to_string(m_files.size()));
    WriteStagedFile(staged, rest, found.original ? found.original->state.mode : found.before.mode);
    if (!found.lines.empty()) SetStaged(staged, found);
    if (!found.original) RequireModeOf(found.path, staged);
    if (found.original || ReadFileBytes(staged) != found.text) planned.staged = staged;
    planned.isOriginalLost = planned.IsChange() && !found.original && IsOriginalLost(m_product, found.path);
    m_files.push_back(std::move(planned));
}

/// As "param set" does.
void LinesPlan::TellLines(const PlannedLines& planned) const {
    const FileWithLines& file = planned.file;
    for (const LineToSet& line : file.lines) {
        if (!line.doubt.empty()) m_product.Out().Warning(line.doubt);
        if (!planned.IsChange() || !line.doubt.empty()) continue;
        const std::string& param = line.edit.param;
        if (param.empty()) continue;
        const Text::ParamLook look = LookOf(file, param);
        TellLinesToSet(m_product.Out(), {file.path, param, look}, _("a pattern and a line set one"));
    }
}

/// A merge knows three texts of a line: what the last commit set, what it is now, and what the lists ask for.
void LinesPlan::JudgeEdited(PlannedLines& planned) const {
    FileWithLines& file = planned.file;
    const std::vector<LineInPlace> places = LinesIn(Text::ManagedText(file.text));
    for (LineToSet& line : file.lines) {
        IZETCore& core = m_product.Core();
        const bool isEdited = StateOfLine(file, line, places, core) == kEdited;
        if (!isEdited && !IsTakenOver(file, line, places, core)) continue;
        const int number = NumberOf(line, places, core);
        if (planned.editedLine == 0) planned.editedLine = number;
        line.stays = m_onEdit == OnEdit::Merge && file.HasSet(SelectorOf(line.edit), line.line);
        planned.isMerged = planned.isMerged || line.stays;
        planned.isEdited = planned.isEdited || !line.stays;
        if (m_onEdit == OnEdit::Merge && !line.stays)
            planned.conflicts.push_back(
                {.file = file.path,
                 .line = number,
                 .text = _("was edited here, where the lists ask for another line, too"),
                 .remedy = _("take the edit out; --on-edit=overwrite sets the line again, and the history "
                             "keeps the edit")});
    }
}

/// The text of a former target gives way to the original's.
void LinesPlan::JudgeEditedTarget(PlannedLines& planned) const {
    const FileWithLines& file = planned.file;
    planned.isEdited = IsFormerTargetEdited(m_known, file);
    planned.dropsMerge = planned.isEdited && m_known.IsAsLeft(file.path);
    planned.editedLine = 0;
    if (planned.isEdited && m_onEdit == OnEdit::Merge)
        planned.conflicts.push_back(
            {.file = file.path,
             .text =
                 Words("%s, and cannot be merged with what was there before", planned.DescribeOthersWork()),
             .remedy = _("take the edit out; --on-edit=overwrite replaces it, and the history keeps it")});
}

std::string PlannedLines::Place() const {
    return editedLine == 0 ? file.path : file.path + ":" + std::to_string(editedLine);
}

std::string PlannedLines::DescribeOthersWork() const {
    if (!file.original) return _("a line that the last commit set was changed since");
    return dropsMerge ? _("holds edits that an earlier commit merged")
                      : _("was edited since the last commit");
}

/// The text without this role's lines that no list has in force. A line that somebody changed stays, with a
/// warning.
std::string LinesPlan::WithoutFormerLines(const FileWithLines& file) {
    std::set<std::string> former;
    for (const RememberedLine& line : FormerLinesOf(m_product, file))
        former.insert(line.line);
    if (former.empty()) return file.text;
    const std::set<std::string> blocks = BlockLinesOf(file.text);
    const auto isFormer = [&](std::string_view line) { return former.contains(std::string(line)); };
    const KnownFile* const known = m_known.Find(file.path);
    std::set<std::string> bereft;
    if (known != nullptr && !m_known.IsAsLeft(file.path))
        bereft = LinesWithoutFormer(m_product, *known, file.text, isFormer);
    for (const std::string& line : bereft)
        m_product.Out().Warning(
            Words("%s: the edit \"%s\" is not in force any more, but what stood there before was taken out, "
                  "and the line stays (delete its block if nobody needs it)",
                  file.path, line.substr(0, line.find('='))));
    for (const std::string& line : former)
        if (!blocks.contains(line))
            m_product.Out().Warning(
                Words("%s: the edit \"%s\" is not in force any more, but what it set was changed, and stays",
                      file.path, line.substr(0, line.find('='))));
    return Text::WithoutBlocksOf(file.text, [&](std::string_view line) {
        return isFormer(line) && !bereft.contains(std::string(line));
    });
}

/// The text with what stood there before where a line of a commit lost its markers: the line is set again,
/// and must not become what is put back. It must not come to stand in another place by that.
std::string LinesPlan::WithLostLines(const FileWithLines& file, const std::string& text) const {
    const KnownFile* const known = m_known.Find(file.path);
    if (known == nullptr || file.original || file.lines.empty()) return text;
    std::set<std::string> selectors;
    for (const LineToSet& line : file.lines)
        selectors.insert(SelectorOf(line.edit));
    const std::set<std::string> blocks = BlockLinesOf(text);
    std::set<std::string> lost;
    for (const RememberedLine& line : file.remembered)
        if (line.role == m_product.Role() && selectors.contains(line.selector) && !blocks.contains(line.line))
            lost.insert(line.line);
    if (lost.empty()) return text;
    BareLines bare = BareLinesIn(m_product, *known, text);
    std::erase_if(bare, [&](const auto& line) { return !lost.contains(line.second.line); });
    if (bare.empty()) return text;
    const std::string former = WithoutBareLines(text, bare);
    return HaveSameSettings(TextWith(file, former), TextWith(file, text)) ? former : text;
}

/// The text in which the lines are set.
std::string LinesPlan::TextWith(const FileWithLines& file, const std::string& text) const {
    const Staging staging;
    const std::string staged = staging.PathOf("lines");
    WriteStagedFile(staged, text, 0600);
    SetStaged(staged, file);
    return ReadFileBytes(staged);
}

void LinesPlan::SetStaged(const std::string& staged, const FileWithLines& file) const {
    const ParamOverride noSync(m_product.Core(), "ZET_SYNC", "no");
    const QuietLog quiet(ZETLogError);
    Set(staged, file);
}

void LinesPlan::Set(const std::string& name, const FileWithLines& file) const {
    const auto opened = m_product.Config().OpenConfigFile(name, NameOf(m_product.Role()), false);
    if (!opened)
        throw Failure(
            {.file = file.path, .text = _("cannot be read any more"), .remedy = _("run the command again")});
    RemedyErrors(kSimplerExpression, [&] {
        for (const LineToSet& line : file.lines)
            if (!line.stays) opened->SetLine(line.pattern, line.line);
    });
    const WrittenLanguage language(m_product.Core());
    RemedyErrors(kRemedyOfRendering, [&] { opened->Save(true); });
}

std::vector<RememberedLine> LinesPlan::ToRemember(const FileWithLines& file) const {
    std::vector<RememberedLine> lines;
    for (const RememberedLine& line : file.remembered)
        if (line.role != m_product.Role()) lines.push_back(line);
    for (const LineToSet& line : file.lines)
        lines.push_back({m_product.Role(), SelectorOf(line.edit), line.line});
    return lines;
}

ExpectedFile LinesPlan::Expected(const PlannedLines& planned) const {
    ExpectedFile file;
    file.path = planned.file.path;
    file.kind = FileKind::Edit;
    if (!planned.isOriginalLost) file.companions = ExpectedFile::Companions::MayCome;
    file.base = TextOf(ToRemember(planned.file));
    file.wasEdited = planned.isEdited;
    if (planned.file.original) {
        file.companions = ExpectedFile::Companions::Stay;
        file.after = OriginalWithLines(planned);
        file.knowledge.emplace();
        return file;
    }
    file.after = Capture(m_product, planned.file.path);
    file.after->SetText(ReadFileBytes(planned.staged));
    return file;
}

bool LinesPlan::IsNewToRole() const {
    const auto isNew = [&](const PlannedLines& planned) {
        return std::any_of(planned.file.lines.begin(), planned.file.lines.end(), [&](const LineToSet& line) {
            return !planned.file.IsCommittedBy(m_product.Role(), SelectorOf(line.edit));
        });
    };
    return !m_known.IsUnusable() && std::any_of(m_files.begin(), m_files.end(), isNew);
}

bool LinesPlan::IsKnown(const PlannedLines& planned) const {
    const KnownFile* const known = m_known.Find(planned.file.path);
    if (known == nullptr || known->kind != FileKind::Edit) return false;
    const std::vector<RememberedLine>& remembered = planned.file.remembered;
    const std::vector<RememberedLine> wanted = ToRemember(planned.file);
    return std::all_of(wanted.begin(), wanted.end(), [&](const RememberedLine& line) {
        return std::find(remembered.begin(), remembered.end(), line) != remembered.end();
    });
}

ExpectedFile LinesPlan::ExpectedUnchanged(const PlannedLines& planned) const {
    ExpectedFile file;
    file.path = planned.file.path;
    file.kind = FileKind::Edit;
    file.base = TextOf(ToRemember(planned.file));
    file.knowledge.emplace();
    const KnownFile* const known = m_known.Find(file.path);
    if (known == nullptr) return file;
    file.knowledge = known->state.knowledge;
    file.knownAs = known->state;  // what somebody has made of it since is not the product's
    return file;
}

FileOutcome LinesPlan::OutcomeOf(const PlannedLines& planned) const {
    const FileWithLines& file = planned.file;
    FileOutcome outcome;
    outcome.file = file.named.empty() ? m_product.HostPaths().NameInside(file.path) : file.named;
    outcome.path = file.path;
    outcome.before = outcome.after = file.before;
    if (file.original) outcome.after = StateOfRecorded(file.original->state);
    outcome.isEdited = planned.isEdited;
    outcome.isMerged = planned.isMerged;
    if (!planned.IsChange()) return outcome;
    const bool isNew = !file.before.exists;
    outcome.result = isNew ? FileOutcome::Result::Created : FileOutcome::Result::Changed;
    outcome.diff = DiffToShow(m_product, isNew ? "" : file.path, planned.staged, file.path);
    return outcome;
}

void LinesPlan::Write(const PlannedLines& planned) const {
    const FileWithLines& file = planned.file;
    const Paths& paths = m_product.HostPaths();
    const FileInPlace place(file.named.empty() ? paths.FindReal(file.path) : paths.Find(file.named),
                            file.path);
    if (file.original) return WriteOriginalWithLines(m_product, planned, place);
    Replacement replacement(m_product, place, file.version);
    const mode_t mode = replacement.Former().mode;
    const auto write = [&](const std::string& name) {
        if (planned.isTakenBack) return SaveOwnText(name, ReadFileBytes(planned.staged), mode);
        Set(name, file);
    };
    replacement.Make(mode, write, [&](const std::string& made) {
        if (!HaveSameBytes(made, planned.staged))
            throw Failure({.file = file.path,
                           .text = _("is not written, since it came out otherwise than it was checked"),
                           .remedy = _("run the command again")});
        if (!planned.isOriginalLost) replacement.KeepOriginal();
    });
}

std::vector<Problem> ProblemsOfEdits(Deployment& product) {
    if (!product.Lists().IsUsable() || product.Lists().Targets().edits.empty()) return {};
    const Staging staging;
    const KnownFiles known(product, KnownFiles::Unusable::IsTold);
    return LinesPlan(product, known, staging).Problems();
}

}  // namespace ZET::Deploy
