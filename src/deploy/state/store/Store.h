#ifndef ZET_STORE_H
#define ZET_STORE_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "deploy/state/store/Database.h"
#include "deploy/state/store/Erasure.h"
#include "deploy/state/store/Records.h"
#include "deploy/state/store/Renaming.h"
#include "deploy/state/store/StoreFile.h"
#include "deploy/state/store/StoreLimits.h"

namespace ZET::Deploy {

/// What the product did on this host: entries with their files, before and after, and each file as the
/// product left it. One writer at a time, who holds the product's lock; readers at any time.
///
/// Each call throws `Failure` that names the store's file and the remedy; a `Damage` where it is damaged.
class Store {
  public:
    enum class Access { Record, Look };

    /// To record, it is made where there is none; to look, there has to be one. `found` is for who has asked
    /// `FindStore` already.
    Store(std::string file, Access access, const StoreLimits& limits = {}, bool isSynced = true,
          std::optional<FoundStore> found = std::nullopt);
    ~Store();
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    const std::string& File() const { return m_file; }

    /// The entries from the first to the last are gone, and so is what was known by them.
    struct Loss {
        std::int64_t first;
        std::int64_t last;
    };

    /// Whether the last entries are not there any more. Where all are gone, it is a `Damage` to open it.
    const std::optional<Loss>& Lost() const { return m_lost; }

    /// What was lost counts as no longer kept from now on, and its numbers are not given again.
    void GiveUpLost();

    /// Whether the key of the marks was damaged, and another one was made.
    bool IsKeyNew() const { return m_isKeyNew; }

    /// Of all files that are known.
    std::set<std::string> KnownDirectories();

    /// All that is recorded of files in these directories is found under their new names from now on: for
    /// good, or by who looks for as long as the store is open, as it was at that moment.
    void Follow(const NewDirectories& directories);

    /// Opens an entry with its files as they are and as they are going to be, which is on the disk when the
    /// call returns: now they can be written. Returns its number.
    std::int64_t Open(const RecordedEntry& entry, const std::vector<FileToRecord>& files);

    /// The same for files of which nobody knows yet what they are going to be. It is there after a kill, but
    /// not after a power cut, and has to be planned before the files are written.
    std::int64_t Announce(const RecordedEntry& entry, const std::vector<FileToRecord>& files);

    /// What the files of an open entry are going to be; others are added to it. On the disk when it returns.
    void Plan(std::int64_t number, std::vector<FileToRecord> files);

    /// Ends an entry. Each file that it changed is known from now on as it left it; an entry that changed
    /// none, or is not to be kept, is dropped, and false returned.
    bool Close(std::int64_t number, EntryOutcome outcome, const Settlement& settlement = {});

    /// Takes an entry out that changed nothing.
    void Drop(std::int64_t number);

    /// Entries from the newest to the oldest, at most `count` of those before `number`.
    std::vector<RecordedEntry> Entries(std::size_t count, std::optional<std::int64_t> before = std::nullopt);
    std::vector<RecordedEntry> EntriesOf(const std::string& path);
    std::vector<RecordedEntry> OpenEntries();
    std::optional<RecordedEntry> Find(std::int64_t number);
    std::vector<RecordedFile> FilesOf(std::int64_t number);

    /// What an entry did to one file, without a look at its others; none: nothing.
    std::optional<RecordedFile> ChangeIn(std::int64_t number, const std::string& path);

    /// What the newest of the entries up to `last` did to it that did anything.
    std::optional<RecordedFile> LastChangeOf(const std::string& path, std::int64_t last);

    /// What the oldest of the entries after `entry` did to it that did anything.
    std::optional<RecordedFile> FirstChangeAfter(const std::string& path, std::int64_t entry);

    /// What all of them did to it, from the newest to the oldest.
    std::vector<RecordedFile> ChangesOf(const std::string& path);

    /// The newest entry that is no longer kept, since there are many; 0: all are. Older ones may be kept, but
    /// not all of them.
    std::int64_t LastPruned();

    /// The targets and edited files that changes after that one have written, or taken back, which no entry
    /// tells of.
    std::vector<std::string> WrittenUntoldAfter(std::int64_t number);

    std::optional<KnownFile> Known(const std::string& path);
    std::vector<KnownFile> KnownFiles();

    /// The templates by which a commit ever wrote a file, as far as that is kept.
    std::set<std::string> CommittedTemplates();

    /// While it lives, the store is seen as it was at the first look, and nothing may be recorded; looking at
    /// much costs less then. Null where a transaction is open already.
    std::unique_ptr<Database::Transaction> Look();

    /// The files are known from now on as they are after, though no entry says so. It is there after a kill,
    /// but not after a power cut.
    void Remember(const std::vector<FileToRecord>& files);
    void Forget(const std::vector<std::string>& paths);

    /// What the call remembers by many calls is there when it ends, also where it throws; of a kill, nothing.
    void RememberTogether(const std::function<void()>& call);

    /// A text that is kept.
    std::string Text(TextNumber number);

    /// How many texts are kept of the files.
    std::size_t CountTexts(const std::vector<std::string>& paths);

    /// Takes the texts of the files out of all that is kept, and makes sure that none of the store's files
    /// holds one any more, but for those that other files have, too. What a word of a command tells of them
    /// goes as well.
    Erasure Erase(const std::vector<std::string>& paths);

  private:
    template <typename Call>
    auto Guarded(Call call);

    enum class Sync { AsTold, Later };
    std::int64_t Begin(const RecordedEntry& entry, const std::vector<FileToRecord>& files, Sync sync);
    void SyncCommits(Sync sync);
    std::unique_ptr<Database::Transaction> TransactionUnlessOpen();
    bool IsJournalLong() const;
    void TakeJournalOverUnlessEntry();
    void LookForLoss(std::int64_t last);

    void Insert(std::int64_t number, const std::vector<FileToRecord>& files);
    bool ReplaceAfter(std::int64_t number, const FileToRecord& file);
    RecordedState AfterOf(const FileToRecord& file, const RecordedState& former,
                          std::optional<TextNumber> before);
    void RememberOne(const FileToRecord& file);

    const std::string m_file;
    const Access m_access;
    const StoreLimits m_limits;
    const bool m_isSynced;
    std::unique_ptr<Database> m_database;
    std::unique_ptr<Database::Transaction> m_look;  ///< by which new names are shown alone
    RecordedEntry m_opened;                         ///< the last one
    std::optional<bool> m_wasJournalLong;           ///< before the entry that was opened last
    std::optional<Loss> m_lost;
    bool m_isKeyNew = false;
};

}  // namespace ZET::Deploy

#endif
