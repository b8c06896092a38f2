#include "deploy/edit/FileEdit.h"

#include "deploy/edit/Edits.h"
#include "deploy/host/Companions.h"
#include "deploy/host/Failure.h"
#include "deploy/host/FileMode.h"
#include "deploy/host/FileState.h"
#include "deploy/host/StagedFile.h"
#include "deploy/host/Staging.h"
#include "deploy/host/Words.h"
#include "deploy/state/LostOriginal.h"
#include "deploy/state/Overrides.h"
#include "deploy/targets/ShownDiff.h"
#include "posix/PathNames.h"

namespace ZET::Deploy {

FileEdit::FileEdit(Deployment& product, const std::string& file, FileInPlace::Access access)
    : m_product(product),
      m_kind(access == FileInPlace::Access::ByPath ? FileKind::Option : FileKind::Edit),
      m_file(file),
      m_path(FileToEdit(product, file)),
      m_writing(product, {m_path}),
      m_place(product.HostPaths().Find(file), m_path, access),
      m_version(m_place.Version()) {}

FileOutcome FileEdit::LeaveUnchanged(const std::string& remark) const {
    FileOutcome outcome;
    outcome.file = m_file;
    outcome.path = m_path;
    outcome.before = outcome.after = StateOf(m_path);
    outcome.reserve = ReserveOf(m_path);
    outcome.remark = remark;
    return outcome;
}

FileOutcome FileEdit::Make(const Operation& operation, bool noBackup, const Inspection& inspection) {
    FileOutcome outcome;
    outcome.file = m_file;
    outcome.path = m_path;
    outcome.result = FileOutcome::Result::Changed;
    outcome.before = StateOf(m_path);
    const bool isOriginalLost =
        !noBackup && m_product.HostHistory().IsNeeded() && IsOriginalLost(m_product, m_path);
    noBackup = noBackup || isOriginalLost;
    const auto judge = [&](const std::string& made) {
        Judge(made, noBackup, inspection, outcome);
        if (isOriginalLost) WarnOfLostOriginal(m_product, m_path);
    };
    try {
        if (m_product.Wanted().dryRun) {
            Try(operation, judge);
        } else {
            Apply(operation, noBackup, judge);
            outcome.after = StateOf(m_path);
            if (!outcome.reserve.empty())
                outcome.remark = Words("the original is kept as %s", outcome.reserve);
        }
    } catch (const LeftAsItIs&) {
        return LeaveUnchanged();
    }
    return outcome;
}

/// Looks at what the edit made before it replaces the file, or would in a dry run.
void FileEdit::Judge(const std::string& made, bool noBackup, const Inspection& inspection,
                     FileOutcome& outcome) {
    if (inspection) inspection(made);
    SignalGuard::Check();
    if (HaveSameModeAndBytes(m_path, made)) throw LeftAsItIs();
    RequireReplaceable(m_path);
    outcome.after = StateOf(made);
    outcome.diff = DiffToShow(m_product, m_path, made, m_path);
    outcome.reserve = noBackup ? ReserveOf(m_path) : ReserveAfterChange(m_path);
    if (outcome.before.links > 1) {
        m_product.Out().Warning(Words("%s: has %s names (hard links); the others keep the former text",
                                      m_path, std::to_string(outcome.before.links)));
    }
}

void FileEdit::Try(const Operation& operation, const Replacement::Judge& judge) {
    // Says what the run could not record.
    const Recording foretold(m_product, Recording::Use::OfFiles, m_writing.Records());
    const Staging staging;
    const std::string staged = staging.PathOf(BaseNameOf(m_path));
    CopyIntoStaging(m_path, staged);
    const ParamOverride noSync(m_product.Core(), "ZET_SYNC", "no");
    const QuietLog quiet(ZETLogWarning);
    Perform(operation, staged);
    RequireModeOf(m_path, staged);
    judge(staged);
}

void FileEdit::Apply(const Operation& operation, bool noBackup, const Replacement::Judge& judge) {
    Writing::Begin();
    Recording recording(m_product, Recording::Use::OfFiles, m_writing.Records());
    if (recording.IsOn()) recording.Expect(Expected(noBackup));
    recording.Announce();
    Replacement replacement(m_product, m_place, m_version);
    try {
        replacement.Make(
            replacement.Former().mode, [&](const std::string& name) { Perform(operation, name); },
            [&](const std::string& made) {
                judge(made);
                if (recording.IsOn())
                    recording.Plan(m_path, Capture(m_product, made), Recording::Attributes::OfTheFileBefore);
                recording.Begin();
                if (!noBackup) replacement.KeepOriginal();
            });
    } catch (const LeftAsItIs&) {
        recording.Discard();
        throw;
    }
    recording.Complete();
}

ExpectedFile FileEdit::Expected(bool noBackup) const {
    using Companions = ExpectedFile::Companions;
    ExpectedFile file;
    file.path = m_path;
    file.place = &m_place;
    file.kind = m_kind;
    file.companions = noBackup ? Companions::Stay : Companions::MayCome;
    file.before = CaptureIn(m_place, "", m_product.HostHistory().Limits().largestText);
    LeaveOthersWork(file);
    return file;
}

/// What somebody made of a target stays known as an edit when the product edits the file, too.
void FileEdit::LeaveOthersWork(ExpectedFile& file) const {
    Store* const store = m_product.HostHistory().ToLookForWriting();
    if (store == nullptr) return;
    const std::optional<KnownFile> known = store->Known(m_product.HostPaths().NameOfReal(m_path));
    if (!known || known->kind != FileKind::Target) return;
    if (HaveSameTextAndMode(known->state, file.before->state)) return;
    file.knownAs = known->state;
    file.wasEdited = true;
}

void FileEdit::Perform(const Operation& operation, const std::string& path) {
    const LoggedFailures failures;
    operation(path);
    if (failures.Any())
        throw Failure({.file = m_path,
                       .text = _("the edit failed, as the log says"),
                       .remedy = _("nothing more was done")});
}

}  // namespace ZET::Deploy
