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

/// Which of the two texts that an entry has of a file.
enum class Side { Before, After };

inline const RecordedState& StateOn(Side side, const RecordedFile& file) {
    return side == Side::Before ? file.before : file.after;
}

/// What the store has, for somebody who looks back: files by the paths that lead to them, and his mistakes
/// told.
class HistoryReader {
  public:
    /// A history that this user may not read, or that cannot be used, is a `Failure`.
    explicit HistoryReader(Deployment& product);

    Deployment& Product() const { return m_product; }
    bool HasAny() const { return m_store != nullptr; }

    /// From the newest to the oldest.
    std::vector<RecordedEntry> Entries(std::size_t count = SIZE_MAX) const;

    /// The same of one file, and of what stands beside it, by its name inside the root.
    std::vector<RecordedEntry> EntriesOf(const std::string& name, std::size_t count = SIZE_MAX) const;

    /// Of an entry that has not ended, what it has not written yet counts as not planned: it may never come.
    std::vector<RecordedFile> FilesOf(std::int64_t number) const;

    /// What the entry did to the file of that name; none: nothing.
    std::optional<RecordedFile> ChangeIn(std::int64_t number, const std::string& name) const;

    /// The name, inside the root, under which the history knows a file that this path leads to.
    std::string NameOf(const std::string& file) const;

    /// The same; none: the history never saw it.
    std::optional<std::string> FindName(const std::string& file) const;

    /// Of the entries that were ever made; 0: none was.
    std::int64_t LastNumber() const;

    RecordedEntry Entry(std::int64_t number) const;
    RecordedFile FileOf(std::int64_t number, const std::string& name) const;

    /// What was done after the entry can be told as a whole; else a `Failure`.
    void RequireAllKeptAfter(std::int64_t number) const;

    /// Why the text is not there though the file was; empty: it is.
    std::string WhyNotKept(const RecordedState& state) const;

    /// The same in English, as all that outlasts its reader.
    std::string WhyNotExported(const RecordedState& state) const;

    std::string Text(const RecordedState& state) const { return m_store->Text(*state.text); }

    /// Whose eyes the texts are for: as the list says, and as the file's mode said then.
    Secrets::Audience AudienceOf(const std::string& name, const RecordedState& state) const;
    bool Hides(const std::string& name, const RecordedState& state) const;

    std::string PathOf(const std::string& name) const { return m_product.HostPaths().FromInside(name); }

  private:
    bool Knows(const std::string& name) const;
    RecordedFile AsDone(std::int64_t number, RecordedFile file) const;
    const char* ReasonOfLack(const RecordedState& state) const;

    Deployment& m_product;
    Store* m_store;
    std::unique_ptr<Database::Transaction> m_look;  ///< all that is read is of one moment
    std::set<std::int64_t> m_open;
};

/// A file's own name, and those of what may stand beside it.
std::vector<std::string> NamesBeside(const std::string& name);

}  // namespace ZET::Deploy

#endif
