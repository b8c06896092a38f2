#include "deploy/state/store/Store.h"

#include <algorithm>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"
#include "deploy/state/store/Deletion.h"
#include "deploy/state/store/KeptTexts.h"
#include "deploy/state/store/LastNumber.h"
#include "deploy/state/store/Rows.h"
#include "deploy/state/store/Schema.h"
#include "deploy/state/store/StoreFile.h"
#include "deploy/state/store/StoreGuard.h"
#include "posix/Clock.h"

namespace ZET::Deploy {

namespace {

/// The pages of so many do not fit into the usual 2 MB: they would be written and read more than once, two
/// calls for each target of a first commit of 1,000.
constexpr std::size_t kManyFiles = 200;

/// The greatest number that an entry ever had.
std::int64_t LastGiven(Database& database) {
    return FirstNumber(database, "SELECT seq FROM sqlite_sequence WHERE name = 'entries'");
}

bool Contains(const std::vector<std::string>& paths, const std::string& path) {
    return std::find(paths.begin(), paths.end(), path) != paths.end();
}

void Know(Database& database, const KnownFile& file) {
    if (IsOfProduct(file.kind))
        ReplaceKnown(database, file);
    else
        DeleteKnown(database, file.path);
}

}  // namespace

Store::Store(std::string file, Access access, const StoreLimits& limits, bool isSynced,
             std::optional<FoundStore> found)
    : m_file(std::move(file)), m_access(access), m_limits(limits), m_isSynced(isSynced) {
    // Read before the database is: another run may end an entry meanwhile.
    std::int64_t last = LastNumberBeside(m_file);
    m_database = Guarded([&] {
        if (!found) found = FindStore(m_file);
        return access == Access::Record ? OpenStoreToRecord(m_file, *found, isSynced)
                                        : OpenStoreToLook(m_file, *found);
    });
    if (LastNumberBeside(m_file) == 0) last = 0;  // it was that of a store that is gone
    Guarded([&] {
        LookForLoss(last);
        m_isKeyNew = access == Access::Record && !MarkKey(*m_database);
        if (m_isKeyNew) RenewMarkKey(*m_database, m_file);
    });
}

Store::~Store() = default;

void Store::LookForLoss(std::int64_t last) {
    const std::int64_t number = LastGiven(*m_database);
    if (number >= last) return;
    if (number == 0) throw DamagedRow(_("all of its changes are gone"));
    m_lost = {number + 1, last};
}

void Store::GiveUpLost() {
    if (!m_lost) return;
    Guarded([&] {
        SyncCommits(Sync::Later);
        Database::Transaction transaction(*m_database);
        m_database->Run("UPDATE sqlite_sequence SET seq = ? WHERE name = 'entries'", {m_lost->last});
        RememberPruned(*m_database, m_lost->last);
        transaction.Commit();
    });
}

std::set<std::string> Store::KnownDirectories() {
    return Guarded([&] { return DirectoriesOfKnown(*m_database); });
}

void Store::Follow(const NewDirectories& directories) {
    Guarded([&] {
        if (m_access == Access::Record) {
            SyncCommits(Sync::Later);
            Database::Transaction transaction(*m_database);
            RenameDirectories(*m_database, directories);
            transaction.Commit();
            return;
        }
        m_database->Run("PRAGMA temp_store = MEMORY");
        m_look = Look();
        ShowDirectoriesRenamed(*m_database, directories);
    });
}

std::int64_t Store::Open(const RecordedEntry& entry, const std::vector<FileToRecord>& files) {
    return Begin(entry, files, Sync::AsTold);
}

std::int64_t Store::Announce(const RecordedEntry& entry, const std::vector<FileToRecord>& files) {
    return Begin(entry, files, Sync::Later);
}

std::int64_t Store::Begin(const RecordedEntry& entry, const std::vector<FileToRecord>& files, Sync sync) {
    return Guarded([&] {
        SyncCommits(sync);
        if (files.size() > kManyFiles) m_database->Run("PRAGMA cache_size = -16384");
        Database::Transaction transaction(*m_database);
        RecordedEntry opened = entry;
        opened.begun = CoarseNow();
        opened.outcome = EntryOutcome::Open;
        const std::int64_t number = InsertEntry(*m_database, opened);
        Insert(number, files);
        transaction.Commit();
        m_wasJournalLong = IsJournalLong();
        opened.number = number;
        m_opened = std::move(opened);
        return number;
    });
}

/// A synced commit takes what was committed before it to the disk as well. Without a journal that is left,
/// each one is synced: half of a commit could be on the disk.
void Store::SyncCommits(Sync sync) {
    if (m_isSynced && m_database->IsJournalLeft())
        m_database->Run(sync == Sync::Later ? Statement("PRAGMA synchronous = NORMAL")
                                            : Statement("PRAGMA synchronous = FULL"));
}

bool Store::IsJournalLong() const {
    return !m_isSynced || m_database->JournalBefore() >= kLongJournal;
}

/// Leaves it to the entry, if one was opened: an entry costs two syncs then, or three.
void Store::TakeJournalOverUnlessEntry() {
    if (!m_wasJournalLong && IsJournalLong()) TakeJournalOver(*m_database, m_file, m_isSynced);
}

void Store::Insert(std::int64_t number, const std::vector<FileToRecord>& files) {
    for (const FileToRecord& file : files) {
        const RecordedFile recorded = WithTexts(*m_database, m_limits, file);
        InsertFile(*m_database, number, recorded);
        if (!file.reserve) continue;
        RecordedFile reserve = *file.reserve;
        reserve.after.text = recorded.before.text;
        InsertFile(*m_database, number, reserve);
    }
}

void Store::Plan(std::int64_t number, std::vector<FileToRecord> files) {
    Guarded([&] {
        SyncCommits(Sync::AsTold);
        Database::Transaction transaction(*m_database);
        std::vector<FileToRecord> added;
        for (FileToRecord& file : files)
            if (!ReplaceAfter(number, file)) added.push_back(std::move(file));
        Insert(number, added);
        transaction.Commit();
    });
}

bool Store::Close(std::int64_t number, EntryOutcome outcome, const Settlement& settlement) {
    return Guarded([&] {
        // The sync with which the taking over begins makes the end durable, too. A journal that only the
        // entry itself made long is left to the next one, as to begin it anew may have cost a sync already.
        const bool wasLong = m_wasJournalLong && std::exchange(*m_wasJournalLong, false);
        SyncCommits(wasLong ? Sync::Later : Sync::AsTold);
        Database::Transaction transaction(*m_database);
        for (const FileToRecord& file : settlement.changed)
            ReplaceAfter(number, file);
        for (const std::string& path : settlement.untouched)
            DeleteFileOf(*m_database, number, path);
        std::vector<LeftFile> left = FilesLeftBy(*m_database, number);
        const bool isKept = settlement.keepsEntry && !left.empty();
        std::erase_if(left, [&](const LeftFile& file) { return Contains(settlement.unclear, file.path); });
        KnowAsLeft(*m_database, left, number);
        for (const FileToRecord& file : settlement.known)
            RememberOne(file);
        RecordedEntry entry =
            m_opened.number == number ? std::exchange(m_opened, {}) : RequiredEntry(*m_database, number);
        entry.ended = CoarseNow();
        entry.outcome = outcome;
        ReplaceEntry(*m_database, entry);
        if (!isKept) DeleteEntry(*m_database, number);
        Prune(*m_database, m_limits);
        transaction.Commit();
        if (wasLong) TakeJournalOver(*m_database, m_file, m_isSynced);
        KeepLastNumber(m_file, LastGiven(*m_database));
        return isKept;
    });
}

/// Returns false if the entry does not have the file.
bool Store::ReplaceAfter(std::int64_t number, const FileToRecord& file) {
    const std::vector<StatesOfFile> all = StatesOfFileAt(*m_database, number, file.file.path);
    for (const StatesOfFile& states : all) {
        const RecordedState before = StateAt(*m_database, states.before);
        const RecordedState after = StateAt(*m_database, states.after);
        ReplaceStateAndTexts(*m_database, states.after, AfterOf(file, after, before.text));
    }
    return !all.empty();
}

/// A text that is kept already need not be given again.
RecordedState Store::AfterOf(const FileToRecord& file, const RecordedState& former,
                             std::optional<TextNumber> before) {
    RecordedState given = file.file.after;
    if (HaveSameText(given, former)) given.text = former.text;
    RecordedState after = AfterWithTexts(*m_database, m_limits, file, std::move(given), before);
    if (!file.base) after.knowledge.base = former.knowledge.base;
    return after;
}

void Store::Drop(std::int64_t number) {
    Guarded([&] {
        SyncCommits(Sync::Later);
        Database::Transaction transaction(*m_database);
        DeleteEntry(*m_database, number);
        transaction.Commit();
        if (m_wasJournalLong && std::exchange(*m_wasJournalLong, false))
            TakeJournalOver(*m_database, m_file, m_isSynced);
    });
}

std::unique_ptr<Database::Transaction> Store::Look() {
    return Guarded([&] {
        return std::make_unique<Database::Transaction>(*m_database, Database::Transaction::Kind::Look);
    });
}

std::unique_ptr<Database::Transaction> Store::LookUnlessOpen() {
    if (m_database->IsInTransaction()) return nullptr;
    return Look();
}

void Store::Remember(const std::vector<FileToRecord>& files) {
    Guarded([&] {
        const auto transaction = TransactionUnlessOpen();
        for (const FileToRecord& file : files)
            RememberOne(file);
        if (!transaction) return;
        transaction->Commit();
        TakeJournalOverUnlessEntry();
    });
}

void Store::RememberTogether(const std::function<void()>& call) {
    Guarded([&] {
        const auto transaction = TransactionUnlessOpen();
        try {
            call();
        } catch (...) {
            if (transaction && m_database->IsInTransaction()) transaction->Commit();
            throw;
        }
        if (!transaction) return;
        transaction->Commit();
        TakeJournalOverUnlessEntry();
    });
}

/// Sets the way of syncing first, as it cannot be changed within a transaction.
std::unique_ptr<Database::Transaction> Store::TransactionUnlessOpen() {
    if (m_database->IsInTransaction()) return nullptr;
    SyncCommits(Sync::Later);
    return std::make_unique<Database::Transaction>(*m_database);
}

void Store::RememberOne(const FileToRecord& file) {
    const std::string& path = file.file.path;
    const std::optional<KnownFile> known = KnownAt(*m_database, path);
    const RecordedState state = AfterWithTexts(*m_database, m_limits, file, file.file.after);
    Know(*m_database, {path, file.file.kind, state, known ? known->entry : 0});
}

Erasure Store::Erase(const std::vector<std::string>& paths) {
    return Guarded([&] {
        m_opened = {};  // its words may change
        m_database->Run("PRAGMA secure_delete = ON");
        Database::Transaction transaction(*m_database);
        Erasure erased = EraseTexts(*m_database, paths);
        transaction.Commit();
        // Free pages, and the journal, may still hold what was kept before.
        m_database->Run("VACUUM");
        if (m_database->Run("PRAGMA wal_checkpoint(TRUNCATE)") != Value(std::int64_t{0})) {
            throw Failure({.file = m_file,
                           .text = _("the texts are erased, but its journal may still hold them, since "
                                     "somebody reads the history"),
                           .remedy = _("run the command again")});
        }
        return erased;
    });
}

}  // namespace ZET::Deploy
