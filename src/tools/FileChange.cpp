#include "FileChange.h"

#include "ChangeReport.h"
#include "ExitStatus.h"
#include "FileBytes.h"
#include "Staging.h"

namespace ZET {

namespace {

bool IsSame(const std::string& path, const std::string& staged) {
    return StateOf(path).mode == StateOf(staged).mode && HaveSameBytes(path, staged);
}

std::string ReadablePath(Session& session, const std::string& file) {
    if (file.empty()) throw UsageError("FILE is empty (name a file)");
    std::string path = session.FilePath(file);
    RequireReadableFile(path);
    return path;
}

}  // namespace

FileChange::FileChange(Session& session, const std::string& file)
    : m_session(session), m_file(file), m_path(ReadablePath(session, file)), m_writing(session, {m_path}) {}

int FileChange::LeaveUnchanged(const std::string& remark) {
    const FileState state = StateOf(m_path);
    return ReportFile(m_session, {m_file, m_path, "unchanged", state, state, ReserveOf(m_path), remark, ""});
}

int FileChange::Make(const Operation& operation, bool noBackup, const Inspection& inspection) {
    const Staging staging;
    const std::string staged = staging.PathOf(BaseNameOf(m_path));
    CopyIntoStaging(m_path, staged);
    Try(operation, staged);
    if (inspection) inspection(staged);
    SignalGuard::Check();
    if (IsSame(m_path, staged)) return LeaveUnchanged();

    FileReport report{m_file, m_path, "changed", StateOf(m_path), StateOf(staged), "", "", ""};
    report.diff = DiffToShow(m_session, m_path, staged, m_path);
    if (report.before.links > 1) {
        m_session.Out().Warning(m_path + ": has " + std::to_string(report.before.links) +
                                " names (hard links); the others keep the former text");
    }
    report.reserve = noBackup ? ReserveOf(m_path) : ReserveAfterChange(m_path);
    if (!m_session.Asked().dryRun) {
        Apply(operation, noBackup, staged);
        report.after = StateOf(m_path);
        if (!report.reserve.empty()) report.remark = "the original is kept as " + report.reserve;
    }
    return ReportFile(m_session, report);
}

void FileChange::Try(const Operation& operation, const std::string& staged) {
    const ParamOverride noSync(m_session.Core(), "ZET_SYNC", "no");
    // What the log has to say comes with the real edit, if there is one.
    const QuietLog quiet(m_session.Asked(), m_session.Asked().dryRun ? ZETLogWarning : ZETLogError);
    Perform(operation, staged, true);
    RequireModeOf(m_path, staged);
}

void FileChange::Apply(const Operation& operation, bool noBackup, const std::string& staged) {
    m_writing.Begin();
    if (!noBackup) m_session.Config().ReserveConfigFile(m_path);
    Perform(operation, m_path, noBackup);
    if (!HasBecome(m_path, staged)) {
        throw Failure(
            m_path +
            ": is not what the edit made of it in trial (another program wrote it at the same time: "
            "look at it, and run the command again)");
    }
}

void FileChange::Perform(const Operation& operation, const std::string& path, bool noBackup) {
    const WrittenLanguage language(m_session.Core());
    const LoggedFailures failures;
    operation(path, noBackup);
    if (failures.Any()) throw Failure(m_path + ": the edit failed, as the log says (nothing more was done)");
}

}  // namespace ZET
