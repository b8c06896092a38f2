#include "deploy/host/Companions.h"
#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileInPlace.h"
#include "deploy/host/FileState.h"
#include "deploy/host/FileVersion.h"
#include "deploy/host/Signals.h"
#include "deploy/host/StagedOwner.h"
#include "deploy/host/Staging.h"
#include "deploy/host/Words.h"
#include "deploy/lists/HostLists.h"
#include "deploy/state/KnownFiles.h"
#include "deploy/state/Overrides.h"
#include "deploy/state/Recording.h"
#include "deploy/state/Replacement.h"
#include "deploy/targets/ClaimedFiles.h"
#include "deploy/targets/NewOwner.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/ShownDiff.h"
#include "deploy/targets/TemplateFileCheck.h"
#include "deploy/targets/TemplateHistory.h"
#include "deploy/targets/Templates.h"
#include "deploy/targets/UnkeptText.h"
#include "deploy/targets/UnknownNames.h"
#include "posix/ModeBits.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

namespace {

/// If the list cannot be read, nothing is known to be a target. One that cannot be understood is a `Failure`.
const std::vector<Target>& ListedTargets(HostLists& lists) {
    static const std::vector<Target> none;
    const TargetList* list = nullptr;
    try {
        list = &lists.Targets();
    } catch (const Failure&) {
        return none;
    }
    if (!list->isUnderstood) throw Failure(list->problems.front());
    return list->targets;
}

/// A target of the list may be made by hand, too, but not what stands beside one.
void RequireFreeTarget(Deployment& product, const std::string& templateName, const std::string& path) {
    ClaimedFiles claimed(product);
    claimed.AddTemplate(templateName);
    claimed.AddListedBeside(path, ListedTargets(product.Lists()));
    if (const auto clash = claimed.ClashOf(templateName)) throw Failure(*clash);
    const std::string use = claimed.UseBesideTargets(path);
    if (!use.empty())
        throw Failure({.file = path, .text = Words("is %s", use), .remedy = _("name another file")});
}

}  // namespace

std::vector<Problem> CheckRendering(Deployment& product, const Rendering& rendering) {
    const std::string& name = rendering.templateName;
    if (TemplateFile(product, name).empty()) return {MissingTemplate(FilesOfTemplate(product, name)).Facts()};
    StringMap values = rendering.values;
    values.insert(product.TemplateValues().begin(), product.TemplateValues().end());
    std::set<std::string> used;
    Text::ValuesToCheck toCheck(values, &used);
    CheckedTemplate checked = CheckTemplate(product, name, toCheck);
    if (checked.size > 0) WarnOfUnusedValues(product, rendering, used);
    std::vector<Problem> problems = std::move(checked.problems);
    Append(problems, product.Values().Problems());
    return problems;
}

std::string RenderedText(Deployment& product, const Rendering& rendering) {
    const Staging staging;
    const QuietLog quiet(ZETLogWarning);
    return ReadFileBytes(RenderStaged(product, staging, rendering.templateName, rendering.values));
}

TemplateProcess::TemplateProcess(Deployment& product, const Rendering& rendering, const std::string& target,
                                 bool isForced)
    : m_product(product),
      m_rendering(rendering),
      m_target(target),
      m_path(product.FilePath(target)),
      m_isForced(isForced) {
    RequireFreeTarget(product, rendering.templateName, m_path);
    if (const Target* const listed = TargetOfFile())
        if (std::optional<Problem> problem = OwnerProblem(product.HostPaths(), *listed))
            throw Failure(*problem);
    RequireNoCompanion(m_path);
    if (StateOf(m_path).exists) RequireReadableFile(m_path);
    std::vector<std::string> files = {m_path};
    Writing::Right right = Writing::Right::OfTheProductIfAny;
    const std::string workingCopy = WorkingCopy(product, rendering.templateName);
    if (!IsFileExist(workingCopy)) {
        files.push_back(workingCopy);
        right = Writing::Right::OfTheProduct;
    }
    m_writing = std::make_unique<Writing>(product, files, right);
}

std::vector<FileOutcome> TemplateProcess::Run() {
    std::optional<FileOutcome> copy = CopyToInstall();
    if (!m_product.Wanted().dryRun) Writing::Begin();
    std::vector<FileOutcome> outcomes = {m_product.Wanted().dryRun ? RunInTrial() : RunInPlace()};
    if (copy) outcomes.push_back(std::move(*copy));
    return outcomes;
}

/// None if there is a working copy already.
std::optional<FileOutcome> TemplateProcess::CopyToInstall() const {
    const TemplateFiles files = FilesOfTemplate(m_product, m_rendering.templateName);
    if (IsFileExist(files.workingCopy)) return std::nullopt;
    FileOutcome outcome;
    outcome.file = files.name;
    outcome.path = files.workingCopy;
    outcome.result = FileOutcome::Result::Created;
    outcome.after = StateOf(files.shipped);
    return outcome;
}

/// What putting `made` into the target's place does, or would do.
FileOutcome TemplateProcess::Planned(const std::string& made, const FileState& after) {
    FileOutcome outcome;
    outcome.file = m_target;
    outcome.path = m_path;
    outcome.result = FileOutcome::Result::Created;
    outcome.before = StateOf(m_path);
    outcome.after = after;
    if (outcome.before.exists) {
        const bool isSame = outcome.before.mode == after.mode && HaveSameBytes(m_path, made);
        outcome.result = isSame ? FileOutcome::Result::Unchanged : FileOutcome::Result::Changed;
    }
    outcome.reserve = outcome.IsChange() ? ReserveAfterChange(m_path) : ReserveOf(m_path);
    if (outcome.IsChange()) outcome.diff = DiffOf(outcome.before.exists ? m_path : "", made);
    if (outcome.result == FileOutcome::Result::Changed) JudgeEdits();
    return outcome;
}

/// What is made of a template is as private as the template.
ShownDiff TemplateProcess::DiffOf(const std::string& before, const std::string& made) {
    const bool wantsDiff = m_product.Wanted().wantsDiffs;
    if (!wantsDiff && !m_product.Wanted().dryRun) return {};  // the file itself shows whether it is private
    const std::string source = WorkingCopy(m_product, m_rendering.templateName);
    const bool isPrivate = m_product.HostSecrets().IsPrivate(source);
    ShownDiff diff;
    if (wantsDiff) diff = DiffToShow(m_product, before, made, isPrivate ? source : m_path, m_path);
    diff.isPrivate = diff.isPrivate || isPrivate;
    return diff;
}

/// Warns of edits as a commit does, and refuses to replace those that would be lost.
void TemplateProcess::JudgeEdits() {
    if (!m_isForced) RequireKeptText(m_product, m_path, m_writing->Records());
    const std::string path = m_product.HostPaths().RealName(m_path);
    const KnownFiles known(m_product);
    const KnownFile* const file = known.Find(path);
    if (file == nullptr || !file->state.knowledge.IsCommitted() || known.IsAsLeft(path)) return;
    m_product.Out().Warning(
        m_product.Wanted().dryRun
            ? Words("%s: was edited since the last commit; the edits would be overwritten", m_path)
            : Words("%s: was edited since the last commit; the edits are overwritten", m_path));
}

/// The mode that a commit would give. If the list has no mode for a secret, the copy must not be readable by
/// anybody who may not read the target, or what was there before.
mode_t TemplateProcess::ModeToGive() const {
    const std::string& name = m_rendering.templateName;
    mode_t mode = ModeOfRendering(m_product, name);
    const Target* const target = m_product.Lists().EntryOf(name);
    if (target == nullptr || !target->isSecret || target->mode) return mode;
    for (const std::string& path : {m_product.FilePath(target->path), m_path})
        if (const FileState there = StateOf(path); there.exists) mode &= there.mode;
    return mode;
}

/// The entry of the template, if its target is this file.
const Target* TemplateProcess::TargetOfFile() const {
    const Paths& paths = m_product.HostPaths();
    const Target* const target = m_product.Lists().EntryOf(m_rendering.templateName);
    const bool isThis =
        target != nullptr && !target->path.empty() && paths.RealName(target->path) == paths.RealName(m_path);
    return isThis ? target : nullptr;
}

/// The owner that a commit would give. A file elsewhere belongs to whoever makes it.
std::optional<FileOwner> TemplateProcess::OwnerToGive() const {
    const Target* const target = TargetOfFile();
    return target == nullptr ? std::nullopt
                             : NewOwnerOf(m_product.HostPaths(), *target, m_path, StateOf(m_path));
}

FileOutcome TemplateProcess::RunInTrial() {
    const Staging staging;
    const QuietLog quiet(ZETLogWarning);
    const std::string staged = RenderStaged(m_product, staging, m_rendering.templateName, m_rendering.values);
    FileState after = GiveOwnerInPlace(m_path, staged);
    after.mode &= ~kModeBits | ModeToGive();
    GiveTo(OwnerToGive(), after);
    return Planned(staged, after);
}

/// Whether the result must be distinguishable from what others make of it, even without a history: a commit
/// asks that of a target, and this command of any file that it does not replace by force. What is known of a
/// file stays true.
bool TemplateProcess::IsRecorded() const {
    if (!m_isForced || m_product.HostHistory().KeepsTexts() || TargetOfFile() != nullptr) return true;
    return KnownFiles(m_product).Find(m_product.HostPaths().RealName(m_path)) != nullptr;
}

FileOutcome TemplateProcess::RunInPlace() {
    FileOutcome outcome;
    const std::string& name = m_rendering.templateName;
    const FileInPlace place(m_product.HostPaths().Find(m_target), m_path);
    // As in a dry run, this is the pristine template's mode if there is no working copy yet.
    const mode_t mode = ModeToGive();
    Recording recording(m_product, IsRecorded() ? Recording::Use::OfTheProduct : Recording::Use::OfFiles,
                        m_writing->Records());
    Expect(recording, place);
    recording.Announce();
    // With the rights of the user who holds the file, the module could not do this while it renders.
    if (place.Holder()) InstallMissingCopy(m_product, name);
    Replacement replacement(m_product, place, VersionOf(m_path));
    if (const std::optional<FileOwner> owner = OwnerToGive()) replacement.GiveNewFileTo(*owner);
    const auto judge = [&](const std::string& made) {
        outcome = Planned(made, StateOf(made));
        SignalGuard::Check();
        if (!outcome.IsChange()) throw LeftAsItIs();
        if (recording.IsOn())
            recording.Plan(m_path, Capture(m_product, made), Recording::Attributes::OfTheFileBefore);
        recording.Begin();
        replacement.KeepOriginal();
    };
    try {
        replacement.Make(
            mode,
            [&](const std::string& file) { RenderOnce(m_product, name, file, m_path, m_rendering.values); },
            judge);
    } catch (const LeftAsItIs&) {
        recording.Complete();  // a working copy may have been installed
        return outcome;
    }
    recording.Complete();
    outcome.after = StateOf(m_path);
    if (!outcome.reserve.empty()) outcome.remark = Words("the original is kept as %s", outcome.reserve);
    return outcome;
}

/// Expects the target, and the working copy that the module installs if there is none.
void TemplateProcess::Expect(Recording& recording, const FileInPlace& place) {
    ExpectedFile target;
    target.path = m_path;
    target.place = &place;
    target.kind = FileKind::Rendering;
    target.companions = ExpectedFile::Companions::MayCome;
    target.wasEdited = recording.IsOn() && HoldsOthersWork(m_product, m_path);
    recording.Expect(target);
    recording.IsMadeFrom(TemplateFile(m_product, m_rendering.templateName));
    ExpectWorkingCopy(recording, m_product, m_rendering.templateName);
}

}  // namespace ZET::Deploy
