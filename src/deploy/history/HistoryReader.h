#ifndef ZET_HISTORY_READER_H
#define ZET_HISTORY_READER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "deploy/state/store/Store.h"
#include "deploy/targets/Deployment.h"
#include "zet/deploy/History.h"

namespace ZET::Deploy {

/// One of the two states that an entry has of a file.
enum class Side { Before, After };

inline const RecordedState& StateOn(Side side, const RecordedFile& file) {
    return side == Side::Before ? file.before : file.after;
}

/// Reads the store for looking back: takes files by any path that leads to them, and reports wrong names and
/// numbers.
class HistoryReader {
  public:
    /// Throws a `Failure` if this user may not read the history, or if it cannot be used.
    explicit HistoryReader(Deployment& product);

    Deployment& Product() const { return m_product; }
    bool HasAny() const { return m_store != nullptr; }

    /// From the newest to the oldest.
    std::vector<RecordedEntry> Entries(std::size_t count = SIZE_MAX) const;

    /// The same for one file and its companions; `name` is the file's inside the root.
    std::vector<RecordedEntry> EntriesOf(const std::string& name, std::size_t count = SIZE_MAX) const;

    /// In an entry that has not ended, a file that it has not written yet counts as not planned: its new
    /// state may never come.
    std::vector<RecordedFile> FilesOf(std::int64_t number) const;

    /// What the entry did to the file of that name; none if it did nothing.
    std::optional<RecordedFile> ChangeIn(std::int64_t number, const std::string& name) const;

    /// Whether the entry was to remove the file of that name.
    bool IsToRemove(std::int64_t number, const std::string& name) const;

    /// The name, inside the root, under which the history knows the file at this path. Throws a `UsageError`
    /// if it does not know the file.
    std::string NameOf(const std::string& file) const;

    /// The same, but none if the history does not know the file.
    std::optional<std::string> FindName(const std::string& file) const;

    /// The number of the newest entry ever made; 0 if none was.
    std::int64_t LastNumber() const;

    RecordedEntry Entry(std::int64_t number) const;
    RecordedFile FileOf(std::int64_t number, const std::string& name) const;

    /// Throws a `Failure` unless all entries after this one are still kept.
    void RequireAllKeptAfter(std::int64_t number) const;

    /// Why the text of a file that existed is not kept; empty if it is kept.
    std::string WhyNotKept(const RecordedState& state) const;

    /// The same in English, for what outlasts its reader.
    std::string WhyNotExported(const RecordedState& state) const;

    std::string Text(const RecordedState& state) const { return m_store->Text(*state.text); }

    /// Who may see the text, by what the list says now and by what the file's mode was then.
    Secrets::Audience AudienceOf(const std::string& name, const RecordedState& state) const;
    bool Hides(const std::string& name, const RecordedState& state) const;

    std::string PathOf(const std::string& name) const { return m_product.HostPaths().FromInside(name); }

    /// From now on, what others record meanwhile is seen, and nobody waits for this reader. Where a directory
    /// was moved, that is only so once the store is closed.
    void EndLook() { m_look.reset(); }

    /// While the result lives, nothing changes that is read. To be called only after `EndLook`.
    std::unique_ptr<Database::Transaction> LookAgain() const { return m_store->LookUnlessOpen(); }

  private:
    bool Knows(const std::string& name) const;
    RecordedFile AsDone(std::int64_t number, RecordedFile file) const;
    const char* ReasonOfLack(const RecordedState& state) const;

    Deployment& m_product;
    Store* m_store;
    std::unique_ptr<Database::Transaction> m_look;  ///< so that all that is read is of one moment
    std::set<std::int64_t> m_open;                  ///< the entries that have not ended
};

/// A file's own name and those of its possible companions.
std::vector<std::string> NamesBeside(const std::string& name);

}  // namespace ZET::Deploy

#endif
