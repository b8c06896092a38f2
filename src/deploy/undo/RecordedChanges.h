#ifndef ZET_RECORDED_CHANGES_H
#define ZET_RECORDED_CHANGES_H

#include <list>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "deploy/state/store/Records.h"

namespace ZET::Deploy {

/// What somebody else wrote into a file between two entries.
struct WorkBetween {
    RecordedState left;      ///< by the older entry
    RecordedState found;     ///< by the newer entry
    std::int64_t entry = 0;  ///< the number of the newer entry
};

/// What entries did to one file and its companions, from the state before the oldest entry to the state that
/// the newest one left.
struct RecordedChange {
    std::string name;  ///< of the file, inside the root
    std::optional<RecordedFile> file{};
    std::optional<RecordedFile> reserve{};
    std::optional<RecordedFile> absence{};
    std::set<Role> roles{};      ///< whose services it concerns
    std::int64_t newest = 0;     ///< the newest of the entries
    std::int64_t oldest = 0;     ///< the oldest of the entries that have the file itself
    bool isWritten = false;      ///< the file itself was written; false: only what is known of it changed
    bool isOfOneEntry = false;   ///< only this entry is taken back; later ones stay
    bool isOthersAlone = false;  ///< the entries did not write it; only somebody else's work is taken back
    std::vector<WorkBetween> between{};  ///< from the newest to the oldest

    /// Whether the file was there before the history knew anything of it.
    bool WasOfNobody() const { return file && file->before.exists && file->kindBefore == FileKind::Original; }
};

/// The changes that one or several entries made.
class RecordedChanges {
  public:
    /// Must be called from the newest entry to the oldest.
    void Add(const RecordedEntry& entry, const std::vector<RecordedFile>& files);

    /// Makes the change go back to what an earlier entry left, and not to what somebody made of it before the
    /// first of these entries.
    void AddLeft(RecordedChange& change, const RecordedState& left);

    std::list<RecordedChange>& All() { return m_changes; }

    /// Adds a file that none of these entries wrote, to go back to what the earlier `entry` left.
    void AddOthersAlone(std::int64_t entry, const RecordedFile& file);

    /// Whether one of the entries has the file itself, and not only its companions.
    bool HasFile(const std::string& name) const;

    /// In the order of the newest entry that touched them.
    std::list<RecordedChange> Changes() && { return std::move(m_changes); }

  private:
    RecordedChange& Of(const std::string& name);

    std::list<RecordedChange> m_changes;
    std::map<std::string, RecordedChange*> m_byName;
};

}  // namespace ZET::Deploy

#endif
