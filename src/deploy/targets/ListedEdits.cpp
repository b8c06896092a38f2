#include "deploy/targets/ListedEdits.h"

#include <unistd.h>

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
#include "deploy/state/CutShort.h"
#include "deploy/state/Language.h"
#include "deploy/state/LostOriginal.h"
#include "deploy/state/Overrides.h"
#include "deploy/state/OwnText.h"
#include "deploy/state/Replacement.h"
#include "deploy/targets/EditRules.h"
#include "deploy/targets/FormerTarget.h"
#include "deploy/targets/ListedEditStates.h"
#include "deploy/targets/PlaceCheck.h"
#include "deploy/targets/ShownDiff.h"
#include "posix/PathNames.h"
#include "text/FirstLine.h"
#include "text/LineEnds.h"
#include "text/ManagedText.h"
#include "text/WithoutBlocks.h"
#include "text/repair/TextToEdit.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

bool HasBlocks(std::string_view text) {
    const Text::ManagedText managed(text);
    return std::any_of(managed.Regions().begin(), managed.Regions().end(), [](const auto& region) {
        return region.kind == Text::RegionKind::Block || region.kind == Text::RegionKind::FormerLine;
    });
}

/// The number of the first line that was changed.
int NumberOf(const LineToSet& line, const std::vector<LineInPlace>& places, IZETCore& core) {
    for (const LineInPlace& place : places)
        if (place.text != line.line && core.MatchRegEx(line.pattern, place.text, nullptr, 0))
            return static_cast<int>(place.number);
    return 0;
}

}  // namespace

ListedEdits::ListedEdits(Deployment& product, const KnownFiles& known, const Staging& staging, OnEdit onEdit)
    : m_product(product), m_known(known), m_onEdit(onEdit), m_cutShort(FilesOfCutShort(product)) {
    ListedLines found = FindListedLines(product, known, staging);
    m_problems = std::move(found.problems);
    for (FileWithLines& file : found.files) {
        product.RequireGoOn();
        try {
            if (file.isThere && Judge(file)) Plan(std::move(file), staging);
        } catch (const Failure& failure) {
            m_problems.push_back(ProblemOf(file.path, failure));
        }
    }
}

/// Whether the file can be edited; adds the problems if it cannot.
bool ListedEdits::Judge(const FileWithLines& file) {
    const std::size_t before = m_problems.size();
    if (const auto damage = Text::FindDamage(file.text))
        m_problems.push_back(Text::ProblemOf(file.path, *damage, m_product.Wanted().program, file.path));
    const Text::FirstLine first = Text::FirstLineOf(file.text);
    if (!file.lines.empty() && (Text::MustComeFirst(first.text) || Text::IsUtf16(first.text)) &&
        first.text.find(ZETNoticeMarker) == std::string_view::npos)
        m_problems.push_back({.file = file.path,
                              .line = static_cast<int>(first.number),
                              .text = _("the programs that read the file need this line as its first, and a "
                                        "notice would come before it"),
                              .remedy = _("take its edits from the lists")});
    JudgePlaceOf(file);
    JudgeLines(file);
    return m_problems.size() == before;
}

/// Checks the file and its directory, as those of a target are checked.
void ListedEdits::JudgePlaceOf(const FileWithLines& file) {
    const std::string& path = file.path;
    std::vector<Problem> problems = CheckDirectory(DirectoryOf(path), path, _("the edit in the list"));
    Append(problems, CheckFileToWrite(path, ZET_TEXT("the edit"), m_cutShort.contains(path)).problems);
    if (!m_claimed) {
        m_claimed.emplace(m_product);
        m_claimed->AddListed(m_product.Lists().Targets().targets);
    }
    const std::string use = m_claimed->UseBesideTargets(path);
    if (!use.empty())
        problems.push_back(
            {.file = path, .text = Words("is %s", use), .remedy = _("give the edit another file")});
    std::set<std::string> names;
    for (const LineToSet& line : file.lines)
        names.insert(line.edit.path);
    if (geteuid() == 0 && problems.empty()) problems = ObjectionsTo(m_product.HostPaths(), names, path);
    if (m_product.Wanted().onlyLooks) WarnOfRights(m_product.Out(), problems);
    Append(m_problems, std::move(problems));
}

/// Each line of the file must belong to one edit at most, and each edit must find its own line again.
void ListedEdits::JudgeLines(const FileWithLines& file) {
    const auto selects = [&](const LineToSet& line, const std::string& text) {
        return Selects(m_product.Core(), line.pattern, text);
    };
    const Text::ManagedText managed(file.text);
    const std::vector<LineInPlace> places = LinesIn(managed);
    std::vector<const LineToSet*> owners(places.size());
    // Pattern by pattern, so that each is compiled once.
    for (const LineToSet& line : file.lines) {
        if (!selects(line, line.line))
            Add(line, _("the line that it sets is not one that it selects"), _("give it another pattern"));
        for (const LineToSet& other : file.lines)
            if (&other != &line && selects(line, other.line))
                Add(line,
                    Words("selects the line that the edit of line %s sets", std::to_string(other.edit.line)),
                    _("give each line to one edit"));
        for (std::size_t i = 0; i < places.size(); ++i) {
            if (!selects(line, places[i].text)) continue;
            JudgePlace(file, line, places[i], owners[i]);
            owners[i] = &line;
        }
    }
}

void ListedEdits::JudgePlace(const FileWithLines& file, const LineToSet& line, const LineInPlace& place,
                             const LineToSet* owner) {
    const std::string where = file.path + ":" + std::to_string(place.number);
    if (owner != nullptr)
        return Add(line,
                   Words("selects %s, as the edit of line %s does", where, std::to_string(owner->edit.line)),
                   _("give each line to one edit"));
    const bool mayBeLists = file.isForgotten || file.isUntold || file.Remembers(SelectorOf(line.edit));
    if (place.isInBlock && place.text != line.line && !mayBeLists)
        Add(line, Words("%s stands in a managed block of something else", where),
            _("restore that, or leave the line to it"));
}

void ListedEdits::Add(const LineToSet& line, const std::string& text, const std::string& remedy) {
    m_problems.push_back({.file = line.edit.file, .line = line.edit.line, .text = text, .remedy = remedy});
}

void ListedEdits::Plan(FileWithLines file, const Staging& staging) {
    const std::string rest = WithoutFormerLines(file);
    PlannedEdits planned{.file = std::move(file), .staged = ""};
    FileWithLines& found = planned.file;
    planned.isTakenBack = rest != found.text;
    if (found.lines.empty() && planned.isTakenBack && !HasBlocks(rest)) {
        m_emptied.push_back(found.path);
        return;
    }
    const Text::LineEnds ends = Text::LineEndsOf(found.text);
    for (LineToSet& line : found.lines)
        line.line = Text::WithLineEnd(line.line, ends);
    JudgeEdited(planned);
    if (found.original) JudgeEditedTarget(planned);
    const std::string staged = staging.PathOf("edits/" + std::to_string(m_files.size()));
    WriteStagedFile(staged, rest, found.original ? found.original->state.mode : found.before.mode);
    const ParamOverride noSync(m_product.Core(), "ZET_SYNC", "no");
    const QuietLog quiet(ZETLogError);
    if (!found.lines.empty()) Set(staged, found);
    if (!found.original) RequireModeOf(found.path, staged);
    if (found.original || ReadFileBytes(staged) != found.text) planned.staged = staged;
    planned.isOriginalLost = planned.IsChange() && !found.original && IsOriginalLost(m_product, found.path);
    m_files.push_back(std::move(planned));
}

/// A merge knows three texts of a line: what the last commit set, what it is now, and what the lists ask for.
void ListedEdits::JudgeEdited(PlannedEdits& planned) const {
    FileWithLines& file = planned.file;
    const std::vector<LineInPlace> places = LinesIn(Text::ManagedText(file.text));
    for (LineToSet& line : file.lines) {
        IZETCore& core = m_product.Core();
        const bool isEdited = StateOfLine(file, line, places, core) == kEdited;
        if (!isEdited && !IsTakenOver(file, line, places, core)) continue;
        line.stays = m_onEdit == OnEdit::Merge && file.HasSet(SelectorOf(line.edit), line.line);
        planned.isMerged = planned.isMerged || line.stays;
        planned.isEdited = planned.isEdited || !line.stays;
        if (m_onEdit == OnEdit::Merge && !line.stays)
            planned.conflicts.push_back(
                {.file = file.path,
                 .line = NumberOf(line, places, core),
                 .text = _("was edited here, where the lists ask for another line, too"),
                 .remedy = _("take the edit out; --on-edit=overwrite sets the line again, and the history "
                             "keeps the edit")});
    }
}

/// The text of a former target gives way to the original's.
void ListedEdits::JudgeEditedTarget(PlannedEdits& planned) const {
    const FileWithLines& file = planned.file;
    planned.isEdited = IsFormerTargetEdited(m_known, file);
    planned.dropsMerge = planned.isEdited && m_known.IsAsLeft(file.path);
    if (planned.isEdited && m_onEdit == OnEdit::Merge)
        planned.conflicts.push_back(
            {.file = file.path,
             .text =
                 Words("%s, and cannot be merged with what was there before", planned.DescribeOthersWork()),
             .remedy = _("take the edit out; --on-edit=overwrite replaces it, and the history keeps it")});
}

std::string PlannedEdits::DescribeOthersWork() const {
    if (!file.original) return _("a line that the last commit set was changed since");
    return dropsMerge ? _("holds edits that an earlier commit merged")
                      : _("was edited since the last commit");
}

/// The text without this role's lines that no list has in force. A line that somebody changed stays, with a
/// warning.
std::string ListedEdits::WithoutFormerLines(const FileWithLines& file) {
    std::set<std::string> former;
    for (const RememberedLine& line : FormerLinesOf(file, m_product.Role()))
        former.insert(line.line);
    if (former.empty()) return file.text;
    const std::set<std::string> blocks = BlockLinesOf(file.text);
    for (const std::string& line : former)
        if (!blocks.contains(line))
            m_product.Out().Warning(
                Words("%s: the edit \"%s\" is not in force any more, but what it set was changed, and stays",
                      file.path, line.substr(0, line.find('='))));
    return Text::WithoutBlocksOf(file.text,
                                 [&](std::string_view line) { return former.contains(std::string(line)); });
}

void ListedEdits::Set(const std::string& name, const FileWithLines& file) const {
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

std::vector<RememberedLine> ListedEdits::ToRemember(const FileWithLines& file) const {
    std::vector<RememberedLine> lines;
    for (const RememberedLine& line : file.remembered)
        if (line.role != m_product.Role()) lines.push_back(line);
    for (const LineToSet& line : file.lines)
        lines.push_back({m_product.Role(), SelectorOf(line.edit), line.line});
    return lines;
}

ExpectedFile ListedEdits::Expected(const PlannedEdits& planned) const {
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

bool ListedEdits::IsKnown(const PlannedEdits& planned) const {
    const KnownFile* const known = m_known.Find(planned.file.path);
    if (known == nullptr || known->kind != FileKind::Edit) return false;
    const std::vector<RememberedLine>& remembered = planned.file.remembered;
    const std::vector<RememberedLine> wanted = ToRemember(planned.file);
    return std::all_of(wanted.begin(), wanted.end(), [&](const RememberedLine& line) {
        return std::find(remembered.begin(), remembered.end(), line) != remembered.end();
    });
}

ExpectedFile ListedEdits::ExpectedUnchanged(const PlannedEdits& planned) const {
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

FileOutcome ListedEdits::OutcomeOf(const PlannedEdits& planned) const {
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

void ListedEdits::Write(const PlannedEdits& planned) const {
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
    return ListedEdits(product, known, staging).Problems();
}

}  // namespace ZET::Deploy
