#include "deploy/edit/FileChange.h"

#include "cli/ExitStatus.h"
#include "deploy/edit/Edits.h"
#include "deploy/host/Staging.h"

namespace ZET {

namespace {

/// The report has begun when the file turns out to be one that cannot be edited.
std::string FileToEdit(Session& session, const std::string& file) {
    BeginFileReport(session);
    return FileToRead(session, file);
}

}  // namespace

FileChange::FileChange(Session& session, const std::string& file, FileInPlace::Access access)
    : m_session(session),
      m_file(file),
      m_path(FileToEdit(session, file)),
      m_writing(session, {m_path}),
      m_place(session.HostPaths().Find(file), m_path, access),
      m_version(VersionIn(m_place.Directory(), m_place.NameInDirectory(), m_path)) {}

int FileChange::LeaveUnchanged(const std::string& remark) {
    const FileState state = StateOf(m_path);
    return ReportFile(m_session, {m_file, m_path, "unchanged", state, state, ReserveOf(m_path), remark, {}});
}

int FileChange::Make(const Operation& operation, bool noBackup, const Inspection& inspection) {
    FileReport report{m_file, m_path, "changed", StateOf(m_path), {}, "", "", {}};
    const auto judge = [&](const std::string& made) { Judge(made, noBackup, inspection, report); };
    try {
        if (m_session.Asked().dryRun) {
            Try(operation, judge);
        } else {
            Apply(operation, noBackup, judge);
            report.after = StateOf(m_path);
            if (!report.reserve.empty()) report.remark = "the original is kept as " + report.reserve;
        }
    } catch (const LeftAsItIs&) {
        return LeaveUnchanged();
    }
    return ReportFile(m_session, report);
}

/// Looks at what the edit made before it takes the file's place, or would.
void FileChange::Judge(const std::string& made, bool noBackup, const Inspection& inspection,
                       FileReport& report) {
    if (inspection) inspection(made);
    SignalGuard::Check();
    if (HaveSameModeAndBytes(m_path, made)) throw LeftAsItIs();
    report.after = StateOf(made);
    report.diff = DiffToShow(m_session, m_path, made, m_path);
    report.reserve = noBackup ? ReserveOf(m_path) : ReserveAfterChange(m_path);
    if (report.before.links > 1) {
        m_session.Out().Warning(m_path + ": has " + std::to_string(report.before.links) +
                                " names (hard links); the others keep the former text");
    }
}

void FileChange::Try(const Operation& operation, const Replacement::Judge& judge) {
    const Staging staging;
    const std::string staged = staging.PathOf(BaseNameOf(m_path));
    CopyIntoStaging(m_path, staged);
    const ParamOverride noSync(m_session.Core(), "ZET_SYNC", "no");
    const QuietLog quiet(m_session.Asked(), ZETLogWarning);
    Perform(operation, staged);
    RequireModeOf(m_path, staged);
    judge(staged);
}

void FileChange::Apply(const Operation& operation, bool noBackup, const Replacement::Judge& judge) {
    m_writing.Begin();
    Replacement replacement(m_session, m_place, m_version);
    replacement.Make(
        replacement.Former().mode, [&](const std::string& name) { Perform(operation, name); },
        [&](const std::string& made) {
            judge(made);
            if (!noBackup) replacement.KeepOriginal();
        });
}

void FileChange::Perform(const Operation& operation, const std::string& path) {
    const LoggedFailures failures;
    operation(path);
    if (failures.Any()) throw Failure(m_path + ": the edit failed, as the log says (nothing more was done)");
}

}  // namespace ZET
