#include "deploy/undo/Undo.h"

#include <algorithm>
#include <list>
#include <map>
#include <memory>

#include "deploy/host/Failure.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/state/KeptEntries.h"
#include "deploy/state/KnownFiles.h"
#include "deploy/state/OwnDirectories.h"
#include "deploy/targets/RememberedLines.h"
#include "deploy/targets/Restarts.h"
#include "deploy/undo/EntriesToUndo.h"
#include "deploy/undo/FileToPutBack.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

namespace {

bool TookFrom(Store& store, Role role, const RecordedFile& row) {
    return CommittersOf(store, row.kindBefore, row.before.knowledge).contains(role) &&
           !CommittersOf(store, row.kind, row.after.knowledge).contains(role);
}

/// The newest entry that left the file in place; none if no such entry is known.
std::optional<std::int64_t> LastToWrite(Store& store, const std::string& name) {
    for (const RecordedEntry& entry : store.EntriesOf(name))
        if (store.ChangeIn(entry.number, name)->after.exists) return entry.number;
    const std::optional<KnownFile> known = store.Known(name);
    return known ? std::optional(known->entry) : std::nullopt;
}

/// One way back, under the lock: first every file is looked at, then all is recorded, then all is written.
class WayBack {
  public:
    WayBack(Deployment& product, const Writing& writing, OthersWork others)
        : m_product(product), m_writing(writing), m_others(others) {}

    void Go(RecordedChanges changes, UndoResult& result) {
        for (RecordedChange& change : std::move(changes).Changes())
            m_files.emplace_back(m_product, std::move(change));
        Look(result);
        if (!result.problems.empty()) return;
        LookAtStatus(result);
        LookAtDirectories(result);
        if (!result.problems.empty()) return;
        Write(result);
    }

  private:
    void Look(UndoResult& result) {
        for (FileToPutBack& file : m_files) {
            m_product.RequireGoOn();
            Append(result.problems, file.Look(m_writing, m_others));
        }
    }

    /// Removes the status of a role that has no targets and no lines left, and keeps that of a role that has
    /// some. A file that was there before the product's own just goes back.
    void LookAtStatus(UndoResult& result) {
        for (const Role role : kRoles) {
            const auto file = FileNamed(m_product.HostPaths().NameOfReal(m_product.State().Status(role)));
            if (file != m_files.end() && file->Change().WasOfNobody()) continue;
            LookAtStatus(m_product.State().Status(role), role, result);
            if (role == Role::Client) LookAtStatus(m_product.State().FileServerStatus(), role, result);
        }
    }

    void LookAtStatus(const std::string& path, Role role, UndoResult& result) {
        const std::string name = m_product.HostPaths().NameOfReal(path);
        const bool isCommitted = IsCommittedThen(role);
        const auto file = FileNamed(name);
        const bool goes = file != m_files.end() && file->Change().file && !file->Change().file->before.exists;
        const bool isOver = !isCommitted && (WasCommitted(role) || LostFilesSince(name, role));
        if (file != m_files.end() && (goes ? isCommitted : isOver)) m_files.erase(file);
        if (!isOver || goes || !IsFileExist(path)) return;
        RecordedChange change;
        change.name = name;
        change.file.emplace();
        change.file->path = name;
        change.file->kind = FileKind::Status;
        change.isWritten = true;
        m_files.emplace_back(m_product, std::move(change));
        Append(result.problems, m_files.back().Look(m_writing, m_others));
    }

    std::list<FileToPutBack>::iterator FileNamed(const std::string& name) {
        return std::find_if(m_files.begin(), m_files.end(),
                            [&](const FileToPutBack& each) { return each.Change().name == name; });
    }

    /// Without --force, the main file does not go back if that would move directories while something is
    /// committed.
    void LookAtDirectories(UndoResult& result) {
        if (m_others == OthersWork::IsReplaced) return;
        if (!IsCommittedThen(Role::Server) && !IsCommittedThen(Role::Client)) return;
        for (const FileToPutBack& file : m_files)
            for (const std::string& name : file.MovedDirectories())
                result.problems.push_back(
                    {.file = file.Path(), .text = CannotMove(name), .remedy = _(kForcedWay)});
    }

    /// True if files were taken from the role after its status was last written: a rollback that was killed
    /// right before its end leaves it behind.
    bool LostFilesSince(const std::string& name, Role role) const {
        Store& store = *m_product.HostHistory().ToLook();
        const std::optional<std::int64_t> written = LastToWrite(store, name);
        if (!written) return false;
        const std::vector<RecordedEntry> since = EntriesAfter(store, *written);
        return std::any_of(since.begin(), since.end(), [&](const RecordedEntry& entry) {
            const std::vector<RecordedFile> files = store.FilesOf(entry.number);
            return std::any_of(files.begin(), files.end(),
                               [&](const RecordedFile& file) { return TookFrom(store, role, file); });
        });
    }

    bool WasCommitted(Role role) { return !Committed(role).empty(); }

    bool IsCommittedThen(Role role) {
        std::set<std::string> names = Committed(role);
        for (const FileToPutBack& file : m_files) {
            names.erase(file.Change().name);
            if (file.RolesAfter().count(role) != 0) names.insert(file.Change().name);
        }
        return !names.empty();
    }

    /// The names, inside the root, of the files that the role has committed by now.
    const std::set<std::string>& Committed(Role role) {
        if (m_committed.empty()) {
            for (const Role each : kRoles)
                m_committed[each];
            Store& store = *m_product.HostHistory().ToLook();
            for (const KnownFile& file : store.KnownFiles())
                for (const Role each : CommittersOf(store, file.kind, file.state.knowledge))
                    m_committed[each].insert(file.path);
        }
        return m_committed[role];
    }

    void Write(UndoResult& result) {
        Recording recording(m_product, Recording::Use::OfTheProduct, m_writing.Records());
        for (const FileToPutBack& file : m_files)
            file.Expect(recording);
        Writing::Begin();
        recording.Begin();
        result.entry = recording.Number();
        try {
            std::size_t done = 0;
            for (const FileToPutBack& file : m_files) {
                m_product.RequireGoOn();
                m_product.Out().Progress(done++, m_files.size());
                Write(file, result);
            }
        } catch (...) {
            TellBreakOff(result);
            throw;
        }
        recording.Complete(Ending::DoneInPart);
        result.entry = recording.Number();
        m_restarts.Tell(m_product.Out());
    }

    void Write(const FileToPutBack& file, UndoResult& result) {
        // The outcome's diff has to be made before one of its sides is gone.
        const FileOutcome outcome = file.Outcome();
        result.isChanged = result.isChanged || outcome.IsChange();
        result.isKept = result.isKept || file.IsKept();
        if (!m_product.Wanted().dryRun) file.Write();
        if (outcome.IsChange()) AddRestarts(file);
        m_product.Out().Done(outcome);
    }

    void AddRestarts(const FileToPutBack& file) {
        try {
            const Target* const target = m_product.Lists().TargetOf(file.Path());
            if (target == nullptr) return;
            for (const Role role : file.Change().roles)
                m_restarts.Add(*target, role);
        } catch (const Failure& failure) {
            // Without a usable list nobody knows the services; the file goes back all the same.
            m_product.Out().Detail(failure.what());
        }
    }

    /// Reports only what was done so far: the caller reports the exception that stopped the run.
    void TellBreakOff(const UndoResult& result) {
        try {
            if (result.isChanged && !m_product.Wanted().dryRun)
                m_product.Out().Error(_("not everything was put back (\"undo\" takes back what was)"));
            m_restarts.Tell(m_product.Out());
        } catch (const std::exception& error) {
            m_product.Out().Error(FailureOf(error).what());
        }
    }

    Deployment& m_product;
    const Writing& m_writing;
    OthersWork m_others;
    std::list<FileToPutBack> m_files;
    std::map<Role, std::set<std::string>> m_committed;
    Restarts m_restarts;
};

/// `number`: the change that was asked for. There is none where there is no store.
Store& StoreToLookIn(Deployment& product, const std::optional<std::int64_t>& number) {
    if (Store* const store = product.HostHistory().ToLook()) return *store;
    if (product.HostHistory().IsDenied()) {
        throw Failure({.file = product.State().Store(),
                       .text = _("cannot be read"),
                       .remedy = _("run the command as root")});
    }
    FailOfNoHistory(product, number);
}

/// In a dry run, others may record and prune meanwhile: all that is read is of one moment.
std::unique_ptr<Database::Transaction> LookIfTrial(Deployment& product, Store& store) {
    return product.Wanted().dryRun ? store.LookUnlessOpen() : nullptr;
}

RecordedChanges ChangesSince(Store& store, std::int64_t number) {
    RecordedChanges changes;
    for (const RecordedEntry& entry : EntriesAfter(store, number))
        changes.Add(entry, store.FilesOf(entry.number));
    return changes;
}

/// The file as the last entry left it. It may be known in another text, if somebody had edited it by then.
RecordedState LeftByLastEntry(Store& store, const KnownFile& known) {
    std::optional<RecordedFile> row = store.ChangeIn(known.entry, known.path);
    if (row) return std::move(row->after);
    return known.state;
}

/// A record without a change of its own: only what somebody has done since is to be taken back.
RecordedFile WithoutChange(const KnownFile& known, const RecordedState& left) {
    RecordedFile row;
    row.path = known.path;
    row.kind = row.kindBefore = known.kind;
    row.before = row.after = left;
    row.before.knowledge = row.after.knowledge = known.state.knowledge;
    if (!HaveSameTextAndMode(left, known.state)) row.knownAsBefore = known.state;
    return row;
}

/// False for working copies and the main file, which are the administrator's to edit.
bool IsMadeByEntries(FileKind kind) {
    return kind == FileKind::Target || kind == FileKind::Edit;
}

/// Files that later entries touched go back to what the last entry up to `number` left, even if somebody
/// edited them before those later entries.
void AddWorkBefore(Store& store, std::int64_t number, RecordedChanges& changes) {
    for (RecordedChange& change : changes.All()) {
        if (!change.file) continue;
        const std::optional<RecordedFile> former = store.LastChangeOf(change.name, number);
        if (former && IsMadeByEntries(former->kind)) changes.AddLeft(change, former->after);
    }
}

/// Files that no later entry touched go back, too, if somebody has edited them since.
void AddOthersWork(Deployment& product, Store& store, RecordedChanges& changes) {
    for (const KnownFile& known : store.KnownFiles()) {
        if (!IsMadeByEntries(known.kind) || changes.HasFile(known.path)) continue;
        const std::string path = product.HostPaths().FromInside(known.path);
        const RecordedState left = LeftByLastEntry(store, known);
        if (!IsAsRecorded(path, left) && !IsAsRecorded(path, known.state))
            changes.AddOthersAlone(known.entry, WithoutChange(known, left));
    }
}

}  // namespace

UndoResult Undo(Deployment& product, const UndoOptions& options) {
    const OthersWork others = WayOf(options);
    StoreToLookIn(product, options.entry);
    if (!options.entry) RequireLastTold(product);
    const Writing writing(product, {}, Writing::Right::OfTheProduct);
    Store& store = StoreToLookIn(product, options.entry);
    const auto look = LookIfTrial(product, store);
    const RecordedEntry entry = EntryToUndo(store, options, product.Wanted().dryRun);
    UndoResult result;
    result.undone = entry.number;
    RecordedChanges changes;
    changes.Add(entry, FilesToUndo(store, entry.number));
    for (RecordedChange& change : changes.All())
        change.isOfOneEntry = true;
    WayBack(product, writing, others).Go(std::move(changes), result);
    // The undo's own entry may have pushed an older one out of the history. All is put back by now: a history
    // that was damaged meanwhile is no failure.
    product.HostHistory().TryLook([&](Store& since) {
        if (const auto further = NewestBefore(since, entry.number, false)) result.further = further->number;
    });
    return result;
}

UndoResult RollBackTo(Deployment& product, std::int64_t entry, const RollBackToOptions& options) {
    const OthersWork others = WayOf(options);
    StoreToLookIn(product, entry);
    const Writing writing(product, {}, Writing::Right::OfTheProduct);
    Store& store = StoreToLookIn(product, entry);
    const auto look = LookIfTrial(product, store);
    KeptEntry(store, entry);
    RequireAllKeptAfter(store, entry, ZET_TEXT("go back to one from %s on"));
    UndoResult result;
    result.undone = entry;
    result.problems = UntoldAfter(product, store, entry);
    if (!result.problems.empty()) return result;
    RecordedChanges changes = ChangesSince(store, entry);
    AddWorkBefore(store, entry, changes);
    AddOthersWork(product, store, changes);
    WayBack(product, writing, others).Go(std::move(changes), result);
    return result;
}

}  // namespace ZET::Deploy
