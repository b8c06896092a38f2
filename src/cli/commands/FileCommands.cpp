#include "cli/ExitStatus.h"
#include "cli/commands/Commands.h"
#include "deploy/edit/ChangeReport.h"
#include "deploy/edit/Edits.h"
#include "deploy/edit/FileChange.h"
#include "deploy/edit/SoundBlocks.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileInPlace.h"
#include "deploy/state/Replacement.h"
#include "text/FirstLine.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET {

namespace {

/// One of the three commands on a file's reserve: what there is, and what the report says.
struct ReserveWork {
    explicit ReserveWork(Session& given)
        : session(given),
          path(ResolvedFile(given)),
          writing(given, {path}),
          place(given.HostPaths().Find(given.Asked().file), path),
          version(VersionOf(path)),
          reserve(path + ZETReserveSuffix),
          record(path + ZETAbsenceSuffix),
          hasFile(IsFileExist(path)),
          hasReserve(IsFileExist(reserve)),
          hasRecord(IsFileExist(record)) {
        report.file = given.Asked().file;
        report.path = path;
        report.change = "unchanged";
        report.before = report.after = StateOf(path);
        report.reserve = hasReserve ? reserve : "";
    }

    static std::string ResolvedFile(Session& session) {
        BeginFileReport(session);
        if (session.Asked().file.empty()) throw UsageError("FILE is empty (name a file)");
        return session.FilePath(session.Asked().file);
    }

    bool IsDryRun() const { return session.Asked().dryRun; }

    void Reserve() {
        writing.Begin();
        Replacement replacement(session, place, version);
        replacement.KeepOriginal();
        replacement.LeaveFile();
    }

    int Tell(const std::string& change, const std::string& remark) {
        report.change = change;
        report.remark = remark;
        return ReportFile(session, report);
    }

    Session& session;
    std::string path;
    Writing writing;  // before anything is looked at
    FileInPlace place;
    FileVersion version;
    std::string reserve;
    std::string record;  ///< that there was no file
    bool hasFile;
    bool hasReserve;
    bool hasRecord;
    FileReport report;
};

int RecordAbsence(ReserveWork& work) {
    if (work.hasRecord)
        return work.Tell("unchanged", "that there is no such file is recorded already, as " + work.record);
    if (!work.IsDryRun()) work.Reserve();
    return work.Tell("reserved", "there is no such file, recorded as " + work.record);
}

}  // namespace

int RunFileStrip(Session& session) {
    FileChange change(session, session.Asked().file);
    RequireNoTarget(session, change.Path());
    const TextToEdit text = LookAtRegions(session, change.Path());
    if (!text.hasRegions) return change.LeaveUnchanged("no managed block and no notice in it");
    // A notice goes in again, but not in front of a line that has to stay the first.
    const bool noNotice = MustComeFirst(text.firstLine);
    const auto strip = [&session, noNotice](const std::string& path) {
        const auto file = OpenedFile(session, path, noNotice);
        file->RemoveZETMarkers();
        const WrittenLanguage language(session.Core());
        SaveEdited(*file);
    };
    return change.Make(strip, session.Asked().noBackup);
}

int RunFileReserve(Session& session) {
    ReserveWork work(session);
    if (!work.hasFile) return RecordAbsence(work);
    RequireReadableFile(work.path);
    if (work.hasReserve) return work.Tell("unchanged", "it is kept already, as " + work.reserve);
    if (work.hasRecord)
        return work.Tell("unchanged", "there was no such file before, as " + work.record + " records");
    work.report.diff = DiffToShow(session, "", work.path, work.path, work.reserve);
    work.report.reserve = work.reserve;
    if (!work.IsDryRun()) work.Reserve();
    return work.Tell("reserved", "kept as " + work.reserve);
}

int RunFileRestore(Session& session) {
    ReserveWork work(session);
    if (!work.hasReserve && !work.hasRecord) return work.Tell("unchanged", "nothing to put back");
    if (work.hasReserve) {
        if (work.hasFile) RequireReadableFile(work.path);
        work.report.diff = DiffToShow(session, work.hasFile ? work.path : "", work.reserve, work.path);
        work.report.diff.Append(DiffToShow(session, work.reserve, "", work.path, work.reserve));
        work.report.after = StateOf(work.reserve);
    }
    if (!work.IsDryRun()) {
        work.writing.Begin();
        RestoreOriginal(session, work.place, work.version);
    }
    work.report.reserve = "";
    if (work.hasReserve) return work.Tell("restored", "from " + work.reserve);
    return work.Tell("forgotten", work.hasFile
                                      ? "there was no such file before; this one stays (remove it by "
                                        "hand if it is not wanted)"
                                      : "there was no such file before, and there is none");
}

int RunFileForget(Session& session) {
    ReserveWork work(session);
    if (!work.hasReserve && !work.hasRecord) return work.Tell("unchanged", "it has no reserve");
    RequireNoTarget(session, work.path);
    if (work.hasReserve) work.report.diff = DiffToShow(session, work.reserve, "", work.path, work.reserve);
    if (!work.IsDryRun()) {
        work.writing.Begin();
        work.place.Within([&](const std::string& name) { session.Config().RemoveConfigFileReserve(name); });
    }
    work.report.reserve = "";
    return work.Tell("forgotten", "its reserve is dropped");
}

}  // namespace ZET
