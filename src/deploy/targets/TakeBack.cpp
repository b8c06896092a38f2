#include "deploy/targets/TakeBack.h"

#include <algorithm>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileInPlace.h"
#include "deploy/host/FileState.h"
#include "deploy/host/StagedFile.h"
#include "deploy/host/Words.h"
#include "deploy/state/LostOriginal.h"
#include "deploy/state/Writing.h"
#include "deploy/targets/EditRollback.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/ShownDiff.h"
#include "deploy/targets/TemplateFileCheck.h"
#include "posix/PathNames.h"
#include "text/NoticeTexts.h"
#include "text/ShellWord.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

namespace {

using Result = FileOutcome::Result;
using Action = TakeBackStep::Action;

/// A link that leads nowhere is no directory yet.
bool IsThere(const Paths& paths, const std::string& directory) {
    const FileState state = StateOf(directory);
    return S_ISLNK(state.mode) ? StateOf(paths.Resolved(paths.NameInside(directory))).exists : state.exists;
}

void RequireRegularIfThere(const std::string& path, const FileState& state) {
    if (state.exists && !state.IsRegular())
        throw Failure({.file = path, .text = _("is no regular file"), .remedy = _("move it away")});
}

/// A directory is never replaced.
void RequireNoDirectory(const std::string& path, const FileState& now) {
    if (now.exists && S_ISDIR(now.mode))
        throw Failure({.file = path, .text = _("is a directory"), .remedy = _("move it away")});
}

std::string PutBackWords(const std::string& attributes, bool isDryRun) {
    if (attributes.empty()) return isDryRun ? _("would be put back as it was") : _("put back as it was");
    return isDryRun ? Words("would be put back as it was, %s", attributes)
                    : Words("put back as it was, %s", attributes);
}

}  // namespace

void TakeBackStep::Tell(Result result, const std::string& remark) {
    outcome = {};
    outcome.file = file.named;
    outcome.path = file.path;
    outcome.templateName = file.templateName;
    outcome.result = result;
    outcome.remark = remark;
}

void TakeBack::Decide(TakeBackStep& step) {
    if (step.file.trouble) throw Failure(*step.file.trouble);
    step.isForced = m_ways.isForced;
    if (!m_ways.isForced && IsOutOfReach(step.file)) {
        Keep(
            step,
            Words("its directory is not there, so that it stays on record (%s forgets it)", Force(step.file)),
            ZET_TEXT("stays on record"));
        return;
    }
    step.version = VersionOf(step.file.path);
    if (!step.file.isEdit || !DecideEdit(step)) DecideTarget(step);
    if (step.IsChange()) RequireWritable(step);
}

/// Finds out before anything goes back what would keep this file from it.
void TakeBack::RequireWritable(const TakeBackStep& step) const {
    const FileInPlace place = step.file.PlaceIn(m_product.HostPaths());
    RequireUsableDirectory(m_product, place.Path());
    if (step.action != Action::DropReserve) RequireReplaceable(step.file.path);
    if (step.action == Action::PutBack) RequireReplaceable(step.file.Reserve());
}

void TakeBack::DecideTarget(TakeBackStep& step) {
    const WrittenFile& file = step.file;
    const FileState reserve = StateOf(file.Reserve());
    const FileState absence = StateOf(file.Absence());
    const FileState now = StateOf(file.path);
    step.hasReserve = reserve.exists;
    if (!reserve.exists && !absence.exists) {
        if (!m_ways.isForced && IsReserveLost(file))
            return Keep(step,
                        Words("has no reserve, stays as it is and on record (\"history %s\" tells what is "
                              "kept of it; %s forgets it)",
                              Text::ShellWord(file.named), Force(file)));
        if (now.exists && m_known.Has(file.path, m_otherRole)) return LeaveToOtherRole(step);
        step.action = Action::OnlyRecord;
        step.Tell(Result::Unchanged, WordsOfNoReserve(m_product, file));
        return;
    }
    RequireRegularIfThere(file.Reserve(), reserve);
    RequireRegularIfThere(file.Absence(), absence);
    // A file that cannot be read must not be reported as edited.
    if (now.IsRegular()) RequireReadableFile(file.path);
    if (now.exists && !m_ways.isForced && !IsOwnWork(file)) {
        KeepEdited(step);
    } else if (!m_ways.isForced && MayBeOthers(file)) {
        KeepOthers(step);
    } else if (m_known.Has(file.path, m_otherRole)) {
        LeaveToOtherRole(step);
    } else {
        DecidePutBack(step, now, reserve);
    }
}

/// Returns false if the file goes back to its reserve, as a target does.
bool TakeBack::DecideEdit(TakeBackStep& step) {
    if (!m_ways.isForced && m_known.Find(step.file.path) == nullptr && MayBeOthers(step.file)) {
        KeepOthers(step);
        return true;
    }
    EditToTakeBack edit = LookAtEdit(m_product, m_known, step.file, m_ways.isForced);
    if (!edit.others.empty()) step.others = TextOf(edit.others);
    switch (edit.way) {
        case EditToTakeBack::Way::Reserve:
            return false;
        case EditToTakeBack::Way::Keep:
            Keep(step, WordsOfKept(step.file, Force(step.file)));
            break;
        case EditToTakeBack::Way::KeepEdited:
            KeepEdited(step, WordsOfEditedBlock(step.file, edit, Force(step.file)),
                       _("edited, stays as it is"));
            break;
        case EditToTakeBack::Way::LeaveIrregular:
            Keep(step, _("is no regular file, stays as it is"));
            break;
        case EditToTakeBack::Way::Forget:
            step.action = Action::OnlyRecord;
            step.Tell(Result::Unchanged, edit.remark);
            break;
        case EditToTakeBack::Way::LeaveToOtherRole:
            TellOfOtherRole(step);
            break;
        case EditToTakeBack::Way::HandOver:
            step.action = Action::OnlyRecord;
            TellOfOtherRole(step);
            break;
        case EditToTakeBack::Way::Blocks:
            if (edit.isUnmarked)
                edit.remark = WordsOfUnmarked(step.file, edit, m_product.Wanted().dryRun, Force(step.file));
            DecideBlocks(step, std::move(edit.text), edit.remark);
            if (edit.isUnmarked) FailToTakeBack(step, step.file.path + ": " + edit.remark);
            break;
    }
    return true;
}

void TakeBack::DecideBlocks(TakeBackStep& step, std::string text, const std::string& remark) {
    step.action = Action::TakeOutBlocks;
    step.Tell(Result::Changed, remark);
    PlanText(step, std::move(text));
}

void TakeBack::PlanText(TakeBackStep& step, std::string text) {
    step.outcome.before = step.outcome.after = StateOf(step.file.path);
    step.text = std::move(text);
    const std::string staged = Room().PathOf("planned");
    WriteStagedFile(staged, step.text, step.outcome.before.mode);
    step.outcome.diff = DiffToShow(m_product, step.file.path, staged, step.file.path);
}

/// Lets the notice name the other role's command: whoever follows it must not commit the role that goes.
void TakeBack::LeaveToOtherRole(TakeBackStep& step) {
    step.action = Action::OnlyRecord;
    TellOfOtherRole(step);
    const KnownFile& known = *m_known.Find(step.file.path);
    if (known.HoldsMerge() || !m_known.IsAsLeft(step.file.path)) return;
    std::optional<std::string> text = Text::WithCommandOf(
        ReadFileBytes(step.file.path), ProgramOf(m_product.Role()), ProgramOf(m_otherRole));
    if (!text) return;
    step.action = Action::NameOtherRole;
    step.Tell(Result::Changed,
              Words("stays for the role %s, whose command its notice names now", RoleInWords(m_otherRole)));
    PlanText(step, std::move(*text));
}

void TakeBack::DecidePutBack(TakeBackStep& step, const FileState& now, const FileState& reserve) const {
    const bool isDryRun = m_product.Wanted().dryRun;
    RequireNoDirectory(step.file.path, now);
    if (now.exists && !now.IsRegular())
        m_product.Out().Warning(
            Words("%s: is no regular file, and the history does not keep it", step.file.path));
    if (reserve.exists) {
        const std::string attributes = now.exists ? DescribeChange(now, reserve) : "";
        step.Tell(Result::Restored, PutBackWords(attributes, isDryRun));
    } else if (now.exists) {
        step.Tell(Result::Removed, isDryRun ? _("would be removed, as there was none before")
                                            : _("removed, as there was none before"));
    } else {
        step.Tell(Result::Unchanged, _("is not there, as before"));
    }
    step.outcome.before = now;
    step.outcome.after = reserve;
    step.outcome.diff = DiffOf(step.file, now, reserve);
    step.action = step.file.IsAsReserved(now, reserve) ? Action::DropReserve : Action::PutBack;
}

bool TakeBack::IsOutOfReach(const WrittenFile& file) const {
    const bool isOnRecord =
        file.isEdit ? m_known.Find(file.path) != nullptr : m_known.Has(file.path, m_product.Role());
    return isOnRecord && !IsThere(m_product.HostPaths(), DirectoryOf(file.path));
}

bool TakeBack::IsReserveLost(const WrittenFile& file) const {
    return IsFileExist(file.path) && !IsFileExist(file.Reserve()) && !IsFileExist(file.Absence()) &&
           m_known.Has(file.path, m_product.Role()) && !m_known.Has(file.path, m_otherRole) &&
           IsKnownAsWritten(m_product, file.path);
}

bool TakeBack::IsAsLeftToGo(const std::string& path) const {
    return m_known.IsOwnWork(path) || (m_known.IsAsLeft(path) && m_known.Has(path, m_otherRole));
}

void TakeBack::TellOfOtherRole(TakeBackStep& step) const {
    step.Tell(Result::Kept, Words("stays for the role %s, which has committed it", RoleInWords(m_otherRole)));
}

bool TakeBack::IsOwnWork(const WrittenFile& file) {
    if (file.isEdit || IsAsLeftToGo(file.path)) return true;
    if (!StateOf(file.path).IsRegular()) return false;
    if (IsFileExist(file.Reserve()) && HaveSameModeAndBytes(file.path, file.Reserve())) return true;
    if (file.templateName.empty()) return false;
    if (!CanBeRendered(m_product, file.templateName)) return false;
    return std::any_of(std::begin(kRoles), std::end(kRoles), [&](Role role) {
        return HaveSameModeAndBytes(file.path, RenderQuietly(m_product, Room(), file.templateName, role));
    });
}

ShownDiff TakeBack::DiffOf(const WrittenFile& file, const FileState& now, const FileState& reserve) const {
    const bool isShown = now.exists ? now.IsRegular() : reserve.exists;
    if (!isShown) return {};
    return DiffToShow(m_product, now.exists ? file.path : "", reserve.exists ? file.Reserve() : "",
                      file.path);
}

/// Made when it is first needed: most rollbacks compare nothing, and work where there is no room left.
const Staging& TakeBack::Room() {
    if (!m_staging) m_staging = std::make_unique<Staging>(m_product.StagingPlace());
    return *m_staging;
}

}  // namespace ZET::Deploy
