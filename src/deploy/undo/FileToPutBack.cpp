#include "deploy/undo/FileToPutBack.h"

#include <unistd.h>

#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/StagedFile.h"
#include "deploy/host/Staging.h"
#include "deploy/host/Words.h"
#include "deploy/state/OwnDirectories.h"
#include "deploy/targets/RememberedLines.h"
#include "deploy/targets/ShownDiff.h"
#include "deploy/undo/DifferenceFromLeft.h"
#include "deploy/undo/MergeBack.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

std::string OwnerOf(const RecordedState& state) {
    return std::to_string(state.owner) + ":" + std::to_string(state.group);
}

bool Differs(const std::optional<CapturedFile>& now, const std::optional<CapturedFile>& wanted) {
    return wanted && now && !now->IsAs(wanted->state);
}

bool HasText(const CapturedFile& file) {
    return file.text.size() == file.state.size;
}

}  // namespace

FileToPutBack::FileToPutBack(Deployment& product, RecordedChange change)
    : m_product(product),
      m_change(std::move(change)),
      m_path(product.HostPaths().FromInside(m_change.name)) {}

void FileToPutBack::Refuse(const std::string& path, const std::string& text, const std::string& remedy) {
    m_problems.push_back({.file = path, .text = text, .remedy = remedy});
}

std::vector<Problem> FileToPutBack::Look(const Writing& writing, OthersWork others) {
    m_others = others;
    try {
        Capture();
        if (m_change.file) LookAt(*m_change.file, "", m_now.file, m_wanted.file);
        m_leavesNewerWork = LeavesNewerWork();
        if (m_leavesNewerWork) m_change.reserve = m_change.absence = std::nullopt;
        if (m_change.reserve) LookAt(*m_change.reserve, ZETReserveSuffix, m_now.reserve, m_wanted.reserve);
        if (m_change.absence) LookAt(*m_change.absence, ZETAbsenceSuffix, m_now.absence, m_wanted.absence);
        if (m_isKept) m_wanted = {};
        if (m_problems.empty()) TellKnownThen();
        if (IsChange() && m_problems.empty()) {
            LoadTexts();
            RequireGivable();
            RequireAllReplaceable();
            writing.RequireRoom(m_path);
        }
    } catch (const Failure& failure) {
        m_problems.push_back(failure.Facts());
    } catch (const EZETError& error) {
        m_problems.push_back(FailureOf(error).Facts());
    }
    return m_problems;
}

void FileToPutBack::Capture() {
    if (!m_product.HostPaths().StaysInside(m_path)) {
        throw Failure({.file = m_path,
                       .text = _("leads out of the root directory by a link"),
                       .remedy = _("put a file there")});
    }
    m_place = std::make_unique<FileInPlace>(
        m_product.HostPaths().FindReal(m_path, m_product.TrustedAt(m_path)), m_path);
    m_version = m_place->Version();
    const std::uint64_t longest = m_product.HostHistory().Limits().largestText;
    m_now = {CaptureIn(*m_place, "", longest), CaptureIn(*m_place, ZETReserveSuffix, longest),
             CaptureIn(*m_place, ZETAbsenceSuffix, longest)};
    if (Store* const store = m_product.HostHistory().ToLook()) m_known = store->Known(m_change.name);
}

/// Compares what is there only with what the entry left and with what stood there before the entry.
void FileToPutBack::LookAt(const RecordedFile& row, const char* suffix, std::optional<CapturedFile>& now,
                           std::optional<CapturedFile>& wanted) {
    const bool isFile = *suffix == '\0';  // rather than a companion
    const bool isWritten = m_change.isWritten || !isFile;
    wanted = isWritten ? CapturedFile{row.before, ""} : now;
    if (!isWritten) return;
    const bool isOthersBetween = isFile && !m_change.between.empty();
    // A status counts as it was left: a later commit that changes nothing else still rewrites its time.
    const bool isAsLeft = (now->IsAs(row.after) && !isOthersBetween) || row.kind == FileKind::Status;
    if (isAsLeft || now->IsAs(row.before)) return;
    m_isOthersWork = true;
    LookAtOthersWork(row, m_path + suffix, *now, *wanted);
}

void FileToPutBack::LookAtOthersWork(const RecordedFile& row, const std::string& path,
                                     const CapturedFile& now, CapturedFile& wanted) {
    switch (m_others) {
        case OthersWork::IsRefused:
            return RefuseOthersWork(row, path, now);
        case OthersWork::IsMerged:
            if (m_change.isOthersAlone) {
                m_isKept = true;
                return;
            }
            if (path == m_path && now.state.exists && row.before.exists && row.after.exists)
                return MergeInto(wanted, row, now);
            return Refuse(path, Words("%s, which cannot be merged", DifferenceBetween(now.state, row.after)),
                          _(kForcedWay));
        case OthersWork::Stays:
            m_isKept = true;
            return;
        case OthersWork::IsReplaced:
            return;
    }
}

void FileToPutBack::RefuseOthersWork(const RecordedFile& row, const std::string& path,
                                     const CapturedFile& now) {
    if (now.IsAs(row.after)) {
        const std::string entry = std::to_string(m_change.between.front().entry);
        return Refuse(path, Words("was edited before change %s wrote it", entry), _(kForcedWay));
    }
    Refuse(path, DifferenceBetween(now.state, row.after) + ": " + NotAsLeftBy(m_change.newest),
           _(kForcedWay));
}

void FileToPutBack::MergeInto(CapturedFile& wanted, const RecordedFile& row, const CapturedFile& now) {
    Store& store = *m_product.HostHistory().ToLook();
    MergedBack merged = MergeBack(store, m_change, now, {m_path, _(kForcedWay)}, LeavesNewerWork());
    Append(m_problems, std::move(merged.problems));
    wanted = std::move(merged.file);
    if (m_problems.empty() && !row.before.knowledge.base && !row.before.knowledge.templateName.empty())
        m_base = store.Text(*row.before.text);
}

/// True for a merge into a file that newer entries wrote, if putting it back would make the history forget
/// the file, or know it as it was before that work.
bool FileToPutBack::LeavesNewerWork() const {
    if (!m_change.file || !IsMerge() || !m_known || m_known->entry <= m_change.newest) return false;
    return m_known->kind != FileKind::Status &&
           (m_change.file->kindBefore == FileKind::Original || m_known->kind == FileKind::Edit);
}

void FileToPutBack::LoadTexts() {
    if (GoesBackToReserve(m_now, m_wanted)) return;
    if (Differs(m_now.file, m_wanted.file)) LoadText(m_wanted.file, "");
    if (Differs(m_now.reserve, m_wanted.reserve)) LoadText(m_wanted.reserve, ZETReserveSuffix);
    if (Differs(m_now.absence, m_wanted.absence)) LoadText(m_wanted.absence, ZETAbsenceSuffix);
}

/// A text that the store does not have may still be in the file itself or in its reserve.
void FileToPutBack::LoadText(std::optional<CapturedFile>& wanted, const char* suffix) {
    if (!wanted->state.exists || (!wanted->text.empty() && HasText(*wanted))) return;
    if (wanted->state.text) {
        wanted->text = m_product.HostHistory().ToLook()->Text(*wanted->state.text);
        return;
    }
    for (const auto& present : {m_now.file, m_now.reserve}) {
        if (!IsThere(present) || !HaveSameText(present->state, wanted->state) || !HasText(*present)) continue;
        wanted->text = present->text;
        return;
    }
    if (wanted->state.size != 0)
        Refuse(m_path + suffix, _("the text that it held before is no longer kept"),
               _("put it back by hand, from a backup"));
}

/// In a directory of another user, the file can only belong to that user.
void FileToPutBack::RequireGivable() {
    if (!IsThere(m_wanted.file) || !Differs(m_now.file, m_wanted.file)) return;
    const RecordedState& wanted = m_wanted.file->state;
    const bool isGivable =
        m_place->Holder() ? wanted.owner == *m_place->Holder() : geteuid() == 0 || wanted.owner == geteuid();
    if (isGivable || GoesBackToReserve(m_now, m_wanted)) return;
    Refuse(m_path, Words("was owned by %s, which it cannot be given back to here", OwnerOf(wanted)),
           geteuid() == 0 ? _("give its directory back to root first") : _("run the command as root"));
}

/// The reserve counts, too: when it is put back, it is renamed to the file.
void FileToPutBack::RequireAllReplaceable() const {
    if (Differs(m_now.file, m_wanted.file)) RequireReplaceable(m_path);
    if (Differs(m_now.reserve, m_wanted.reserve)) RequireReplaceable(m_path + ZETReserveSuffix);
    if (Differs(m_now.absence, m_wanted.absence)) RequireReplaceable(m_path + ZETAbsenceSuffix);
}

bool FileToPutBack::IsChange() const {
    return Differs(m_now.file, m_wanted.file) || Differs(m_now.reserve, m_wanted.reserve) ||
           Differs(m_now.absence, m_wanted.absence);
}

/// Sets what is known of the file afterwards. Called once `m_isKept` and `m_leavesNewerWork` are set.
void FileToPutBack::TellKnownThen() {
    if (!m_change.file) return;
    if (m_isKept) {
        if (IsEditedBetween()) m_then = KnownAsEditedBetween(m_change, *m_known);
        return;
    }
    if (m_leavesNewerWork) {
        m_then = KnownAsNow(*m_known, *m_now.file);
        return;
    }
    m_then = KnownOnceBack(*m_product.HostHistory().ToLook(), m_change, m_known,
                           Differs(m_now.file, m_wanted.file));
    if (m_base) m_then.base = m_base;
}

/// True for a target that is as the product left it, but that somebody had edited between the entries.
bool FileToPutBack::IsEditedBetween() const {
    return m_known && m_known->kind == FileKind::Target && !m_change.between.empty() &&
           HaveSameTextAndMode(m_now.file->state, m_known->state);
}

std::set<std::string> FileToPutBack::MovedDirectories() const {
    if (!m_change.file || m_change.file->kind != FileKind::Option || !Differs(m_now.file, m_wanted.file))
        return {};
    const bool isInReserve = GoesBackToReserve(m_now, m_wanted);
    return DirectoriesThatDiffer(m_now.file->text, isInReserve ? m_now.reserve->text : m_wanted.file->text);
}

std::set<Role> FileToPutBack::RolesAfter() const {
    Store& store = *m_product.HostHistory().ToLook();
    if (m_change.file && !m_isKept) return CommittersOf(store, m_then);
    return m_known ? CommittersOf(store, m_known->kind, m_known->state.knowledge) : std::set<Role>();
}

void FileToPutBack::Expect(Recording& recording) const {
    if (m_isKept) {
        if (m_then.knownAs) ExpectPart(recording, *m_change.file, "", m_now.file);
        return;
    }
    if (m_change.file) ExpectPart(recording, *m_change.file, "", m_wanted.file);
    if (m_change.reserve) ExpectPart(recording, *m_change.reserve, ZETReserveSuffix, m_wanted.reserve);
    if (m_change.absence) ExpectPart(recording, *m_change.absence, ZETAbsenceSuffix, m_wanted.absence);
}

void FileToPutBack::ExpectPart(Recording& recording, const RecordedFile& row, const char* suffix,
                               const std::optional<CapturedFile>& wanted) const {
    ExpectedFile file;
    file.path = m_path;
    file.place = m_place.get();
    file.suffix = suffix;
    file.after = wanted;
    file.kind = row.kind;
    file.isPutBack = true;
    if (row.kind != FileKind::Companion) {
        file.kind = m_then.kind;
        file.knowledge = m_then.knowledge;
        file.base = m_then.base;
        file.knownAs = m_then.knownAs;
        file.wasEdited = m_isOthersWork;
    }
    recording.Expect(file);
}

void FileToPutBack::Write() const {
    if (!IsChange()) return;
    StateWriter(m_product, *m_place, m_version).Bring(m_now, m_wanted);
}

FileOutcome::Result FileToPutBack::Result() const {
    using Result = FileOutcome::Result;
    if (m_isKept) return Result::Kept;
    if (Differs(m_now.file, m_wanted.file)) {
        if (!m_wanted.file->state.exists) return Result::Removed;
        if (GoesBackToReserve(m_now, m_wanted)) return Result::Restored;
        return IsThere(m_now.file) ? Result::Changed : Result::Created;
    }
    if (!IsChange()) return Result::Unchanged;
    return IsThere(m_wanted.reserve) || IsThere(m_wanted.absence) ? Result::Reserved : Result::Forgotten;
}

std::string FileToPutBack::Remark() const {
    switch (Result()) {
        case FileOutcome::Result::Kept:
            return _("edited, stays as it is");
        case FileOutcome::Result::Unchanged:
            return IsMerge() ? _("keeps what was edited since") : _("is as it was before already");
        case FileOutcome::Result::Reserved:
            return Words("kept as %s",
                         m_path + (IsThere(m_wanted.reserve) ? ZETReserveSuffix : ZETAbsenceSuffix));
        case FileOutcome::Result::Forgotten:
            return _("nothing is kept beside it");
        default:
            break;
    }
    if (IsMerge()) return _("merged with what was edited since");
    if (IsThere(m_now.file) && m_version.inode != 0) {
        const FileState now = StateOf(m_path);
        if (now.links > 1)
            return Words("the other %s of its names keep the former text", std::to_string(now.links - 1));
    }
    return "";
}

FileOutcome FileToPutBack::Outcome() const {
    FileOutcome outcome;
    outcome.file = m_change.name;
    outcome.path = m_path;
    outcome.result = Result();
    outcome.before = outcome.after = StateOf(m_path);
    if (m_wanted.file) outcome.after = StateOfRecorded(m_wanted.file->state);
    const bool hasReserve = m_wanted.reserve ? IsThere(m_wanted.reserve) : IsThere(m_now.reserve);
    if (hasReserve) outcome.reserve = m_path + ZETReserveSuffix;
    outcome.remark = Remark();
    if (m_change.file) {
        outcome.templateName = m_change.file->before.knowledge.templateName;
        if (outcome.templateName.empty()) outcome.templateName = m_change.file->after.knowledge.templateName;
    }
    outcome.isEdited = m_isOthersWork;
    outcome.isMerged = IsMerge();
    outcome.diff = Diff();
    return outcome;
}

ShownDiff FileToPutBack::Diff() const {
    ShownDiff diff = DiffOfTexts();
    return m_change.file ? WithoutFormerSecrets(m_product, std::move(diff), *m_change.file, m_path) : diff;
}

ShownDiff FileToPutBack::DiffOfTexts() const {
    if (!m_product.Wanted().wantsDiffs || !Differs(m_now.file, m_wanted.file)) return {};
    const std::string former = IsThere(m_now.file) ? m_path : "";
    if (!m_wanted.file->state.exists) return DiffToShow(m_product, former, "", m_path);
    if (GoesBackToReserve(m_now, m_wanted))
        return DiffToShow(m_product, former, m_path + ZETReserveSuffix, m_path);
    const Staging staging;
    const std::string staged = staging.PathOf("file");
    // The staged copy must not be readable by anybody who may not read the file.
    WriteStagedFile(staged, m_wanted.file->text, m_wanted.file->state.mode & 0777);
    return DiffToShow(m_product, former, staged, m_path);
}

}  // namespace ZET::Deploy
