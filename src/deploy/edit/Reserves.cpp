#include "deploy/edit/Reserves.h"

#include "deploy/edit/CommitGuard.h"
#include "deploy/edit/Edits.h"
#include "deploy/edit/FileEdit.h"
#include "deploy/edit/SoundBlocks.h"
#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileInPlace.h"
#include "deploy/host/FileName.h"
#include "deploy/host/FileState.h"
#include "deploy/host/FileVersion.h"
#include "deploy/host/Words.h"
#include "deploy/state/Language.h"
#include "deploy/state/Recording.h"
#include "deploy/state/Replacement.h"
#include "deploy/state/Writing.h"
#include "deploy/targets/ShownDiff.h"
#include "deploy/targets/UnkeptText.h"
#include "text/FirstLine.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

using Result = FileOutcome::Result;

/// What the three operations on a reserve share: what is there, and what the report says.
struct ReserveWork {
    ReserveWork(Deployment& given, const std::string& file, Purpose why = Purpose::Writes)
        : product(given),
          path(ResolvedFile(given, file)),
          writing(given, {path}, Writing::Right::OfTheFiles, why),
          purpose(why),
          place(given.HostPaths().Find(file), path),
          version(VersionOf(path)),
          reserve(path + ZETReserveSuffix),
          absence(path + ZETAbsenceSuffix),
          hasFile(IsFileExist(path)),
          hasReserve(IsFileExist(reserve)),
          hasAbsence(IsFileExist(absence)) {
        outcome.file = file;
        outcome.path = path;
        outcome.before = outcome.after = StateOf(path);
        outcome.reserve = hasReserve ? reserve : "";
    }

    static std::string ResolvedFile(const Host& host, const std::string& file) {
        RequireFileName(file);
        return host.FilePath(file);
    }

    bool IsDryRun() const { return product.Wanted().dryRun; }

    /// Nothing but a file has a reserve; a link that leads nowhere is what is left of one.
    FileOutcome WithoutReserve(const std::string& remark) {
        if (outcome.before.exists && !S_ISLNK(outcome.before.mode) && !outcome.before.IsRegular())
            RequireReadableFile(path);
        return Result(FileOutcome::Result::Unchanged, remark);
    }

    void Reserve() {
        Recorded(ExpectedFile::Companions::MayCome, std::nullopt, [&] {
            Replacement replacement(product, place, version);
            replacement.KeepOriginal();
            replacement.LeaveFile();
        });
    }

    /// `after` is the state that the file is going to have; none if it stays as it is. A dry run only tells
    /// what would be lost.
    template <typename Work>
    void Recorded(ExpectedFile::Companions companions, const std::optional<CapturedFile>& after, Work work) {
        Recording recording(product, Recording::Use::OfFiles, writing.Records(), purpose);
        ExpectedFile expected;
        expected.path = path;
        expected.place = &place;
        expected.companions = companions;
        expected.after = after;
        const bool isRecorded = IsDryRun() ? writing.Records() : recording.IsOn();
        expected.wasEdited = after && isRecorded && HoldsOthersWork(product, path);
        if (after && recording.IsOn() && !IsCommitted()) ExpectOriginal(expected);
        recording.Expect(expected);
        if (IsDryRun()) return;
        Writing::Begin();
        recording.Begin();
        work();
        recording.Complete();
    }

    /// A damaged history keeps no file from going back, and then the recording does without it, too.
    bool IsCommitted() const {
        try {
            return product.Lists().IsCommitted(product.Lists().NameOf(path));
        } catch (const Failure& failure) {
            if (product.HostHistory().IsNeeded(purpose)) throw;
            product.HostHistory().TellUnusable(failure);
            return true;
        }
    }

    /// The history is to know nothing of the file any more, even if the file stays as it was.
    static void ExpectOriginal(ExpectedFile& expected) {
        expected.kind = FileKind::Original;
        expected.knowledge = Knowledge();
    }

    FileOutcome Result(FileOutcome::Result result, const std::string& remark) {
        outcome.result = result;
        outcome.remark = remark;
        return outcome;
    }

    Deployment& product;
    std::string path;
    Writing writing;  // takes the lock, so it comes before anything is looked at
    Purpose purpose;
    FileInPlace place;
    FileVersion version;
    std::string reserve;
    std::string absence;  ///< the record that there was no file
    bool hasFile;
    bool hasReserve;
    bool hasAbsence;
    FileOutcome outcome;
};

FileOutcome RecordAbsence(ReserveWork& work) {
    if (work.hasAbsence)
        return work.Result(Result::Unchanged,
                           Words("that there is no such file is recorded already, as %s", work.absence));
    work.Reserve();
    return work.Result(Result::Reserved, Words("there is no such file, recorded as %s", work.absence));
}

}  // namespace

FileOutcome StripFile(Deployment& product, const std::string& file, const EditOptions& options) {
    RequireWholeFile(options);
    FileEdit edit(product, file);
    CommitGuard::RequireNoCommit(product, edit.Path(), options);
    const Text::TextToEdit text = LookAtRegions(product, {file, edit.Path()});
    if (!text.hasRegions) return edit.LeaveUnchanged(_("no managed block and no notice in it"));
    // The module puts a notice in again, which must not come before a line that has to stay the first.
    const bool noNotice = Text::MustComeFirst(text.firstLine);
    const auto strip = [&product, noNotice](const std::string& path) {
        const auto opened = OpenedFile(product, path, noNotice);
        opened->RemoveZETMarkers();
        const WrittenLanguage language(product.Core());
        SaveEdited(*opened);
    };
    return edit.Make(strip, options.noBackup);
}

FileOutcome ReserveFile(Deployment& product, const std::string& file) {
    ReserveWork work(product, file);
    if (!work.hasFile) return RecordAbsence(work);
    RequireReadableFile(work.path);
    if (work.hasReserve)
        return work.Result(Result::Unchanged, Words("it is kept already, as %s", work.reserve));
    if (work.hasAbsence)
        return work.Result(Result::Unchanged,
                           Words("there was no such file before, as %s records", work.absence));
    work.outcome.diff = DiffToShow(product, "", work.path, work.path, work.reserve);
    work.outcome.reserve = work.reserve;
    work.Reserve();
    return work.Result(Result::Reserved, Words("kept as %s", work.reserve));
}

FileOutcome RestoreFile(Deployment& product, const std::string& file, const EditOptions& options) {
    ReserveWork work(product, file, Purpose::GoesBack);
    if (!work.hasReserve && !work.hasAbsence) return work.WithoutReserve(_("nothing to put back"));
    if (!work.hasReserve) CommitGuard::RequireNoMark(product, work.path, options);
    if (work.hasReserve) {
        if (work.hasFile) RequireReadableFile(work.path);
        if (!options.force) RequireKeptText(product, work.path, work.writing.Records());
        work.outcome.diff = DiffToShow(product, work.hasFile ? work.path : "", work.reserve, work.path);
        work.outcome.diff.Append(DiffToShow(product, work.reserve, "", work.path, work.reserve));
        work.outcome.after = StateOf(work.reserve);
        for (const std::string& path : {work.path, work.reserve})
            RequireReplaceable(path);
    }
    std::optional<CapturedFile> after;
    if (work.hasReserve) after = Capture(product, work.reserve);
    work.Recorded(ExpectedFile::Companions::MayGo, after,
                  [&] { RestoreOriginal(product, work.place, work.version); });
    work.outcome.reserve = "";
    if (work.hasReserve) return work.Result(Result::Restored, Words("from %s", work.reserve));
    return work.Result(
        Result::Forgotten,
        work.hasFile
            ? _("there was no such file before; this one stays (remove it by hand if it is not wanted)")
            : _("there was no such file before, and there is none"));
}

FileOutcome ForgetReserve(Deployment& product, const std::string& file, const EditOptions& options) {
    RequireWholeFile(options);
    ReserveWork work(product, file);
    if (!work.hasReserve && !work.hasAbsence) return work.WithoutReserve(_("it has no reserve"));
    CommitGuard::RequireNoCommit(product, work.path, options);
    if (work.hasReserve) work.outcome.diff = DiffToShow(product, work.reserve, "", work.path, work.reserve);
    work.Recorded(ExpectedFile::Companions::MayGo, std::nullopt, [&] {
        work.place.Within([&](const std::string& name) { product.Config().RemoveConfigFileReserve(name); });
    });
    work.outcome.reserve = "";
    return work.Result(Result::Forgotten, _("its reserve is dropped"));
}

}  // namespace ZET::Deploy
