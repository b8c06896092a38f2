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
/// product left it. There may be one writer at a time, who holds the product's lock, and readers at any time.
///
/// Calls that fail throw a `Failure` that names the store's file and the remedy; a `Damage` if it is damaged.
class Store {
  public:
    enum class Access { Record, Look };

    /// To record, makes the store if there is none; to look, there has to be one. `found` is for callers that
    /// have called `FindStore` already.
    Store(std::string file, Access access, const StoreLimits& limits = {}, bool isSynced = true,
          std::optional<FoundStore> found = std::nullopt);
    ~Store();
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    const std::string& File() const { return m_file; }

    /// The entries from the first to the last are gone, and so is what was known from them.
    struct Loss {
        std::int64_t first;
        std::int64_t last;
    };

    /// The last entries, if they are gone. If all are, the constructor throws a `Damage`.
    const std::optional<Loss>& Lost() const { return m_lost; }

    /// From now on, what was lost counts as no longer kept, and its numbers are not given again.
    void GiveUpLost();

    /// Whether the key of the marks was damaged, so that another one was made.
    bool IsKeyNew() const { return m_isKeyNew; }

    /// The directories of all files that are known.
    std::set<std::string> KnownDirectories();

    /// From now on, all that is recorded of files in these directories is found under their new names: for
    /// good when recording; else while the store is open, which is then seen as it is at this moment.
    void Follow(const NewDirectories& directories);

    /// Opens an entry with its files as they are and as they are going to be. It is on the disk when the call
    /// returns, so that the files can be written. Returns its number.
    std::int64_t Open(const RecordedEntry& entry, const std::vector<FileToRecord>& files);

    /// The same for files of which it is not known yet what they are going to be. The entry survives a kill,
    /// but not a power cut, and has to be planned before the files are written.
    std::int64_t Announce(const RecordedEntry& entry, const std::vector<FileToRecord>& files);

    /// States what the files of an open entry are going to be; others are added. On the disk when it returns.
    void Plan(std::int64_t number, std::vector<FileToRecord> files);

    /// Ends an entry. From now on, each file that it changed is known as it left it. An entry that changed
    /// none, or is not to be kept, is dropped; then it returns false.
    bool Close(std::int64_t number, EntryOutcome outcome, const Settlement& settlement = {});

    /// Removes an entry. What is known of its files stays.
    void Drop(std::int64_t number);

    /// Entries from the newest to the oldest, at most `count`, and of those only before the entry `before`.
    std::vector<RecordedEntry> Entries(std::size_t count, std::optional<std::int64_t> before = std::nullopt);
    std::vector<RecordedEntry> EntriesOf(const std::string& path);
    std::vector<RecordedEntry> OpenEntries();
    std::optional<RecordedEntry> Find(std::int64_t number);
    std::vector<RecordedFile> FilesOf(std::int64_t number);

    /// What an entry did to one file, without a look at its others; none if it did nothing.
    std::optional<RecordedFile> ChangeIn(std::int64_t number, const std::string& path);

    /// What the newest entry up to `last` that changed the file did to it; none if entries after that one
    /// were pruned, since they may have changed the file, too.
    std::optional<RecordedFile> LastChangeOf(const std::string& path, std::int64_t last);

    /// What the oldest entry after `entry` that changed the file did to it.
    std::optional<RecordedFile> FirstChangeAfter(const std::string& path, std::int64_t entry);

    /// What all entries did to the file, from the newest to the oldest.
    std::vector<RecordedFile> ChangesOf(const std::string& path);

    /// The newest of the entries that are no longer kept, as there are many; 0 if all are kept. Some older
    /// ones may be kept, but not all of them.
    std::int64_t LastPruned();

    /// The targets and edited files that changes after that one wrote, or took back, without an entry that
    /// tells of it.
    std::vector<std::string> WrittenUntoldAfter(std::int64_t number);

    std::optional<KnownFile> Known(const std::string& path);
    std::vector<KnownFile> KnownFiles();

    /// The templates by which a commit ever wrote a file, as far as that is kept.
    std::set<std::string> CommittedTemplates();

    /// Another number once another process has recorded something.
    std::int64_t Version();

    /// While the result lives, the store is seen as it was at the first look, and nothing may be recorded.
    /// Many looks cost less then.
    std::unique_ptr<Database::Transaction> Look();

    /// The same, but null where the store is seen so already: while a moved directory is followed.
    std::unique_ptr<Database::Transaction> LookUnlessOpen();

    /// From now on, the files are known as they are after, though no entry says so. This survives a kill, but
    /// not a power cut.
    void Remember(const std::vector<FileToRecord>& files);

    /// What `call` remembers is stored together when it ends, even if it throws; a kill leaves nothing of it.
    void RememberTogether(const std::function<void()>& call);

    /// A text that is kept.
    std::string Text(TextNumber number);

    /// How many texts are kept of the files.
    std::size_t CountTexts(const std::vector<std::string>& paths);

    /// Takes the texts of the files out of all that is kept, and the words of commands that tell of them.
    /// Makes sure that none of the store's files holds such a text any more, except those that other files
    /// have, too.
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
    std::unique_ptr<Database::Transaction> m_look;  ///< while it lives, directories have their new names
    RecordedEntry m_opened;                         ///< the entry that was opened last
    std::optional<bool> m_wasJournalLong;           ///< before the entry that was opened last
    std::optional<Loss> m_lost;
    bool m_isKeyNew = false;
};

}  // namespace ZET::Deploy

#endif
