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

/// Somebody else wrote a file between two entries.
struct WorkBetween {
    RecordedState left;      ///< by the older of them
    RecordedState found;     ///< by the newer
    std::int64_t entry = 0;  ///< the newer
};

/// What entries did to one file and to what stands beside it: from what it was before the oldest of them to
/// what the newest left.
struct RecordedChange {
    std::string name;  ///< of the file, inside the root
    std::optional<RecordedFile> file{};
    std::optional<RecordedFile> reserve{};
    std::optional<RecordedFile> absence{};
    std::set<Role> roles{};              ///< whose commands did it
    std::int64_t newest = 0;             ///< the last of the entries
    std::int64_t oldest = 0;             ///< the first that has the file itself
    bool isWritten = false;              ///< the file itself was; else only something else is known of it
    bool isOfOneEntry = false;           ///< only this entry is taken back; later ones stay
    bool isOthersAlone = false;          ///< the entries did not write it: only somebody else's work goes
    std::vector<WorkBetween> between{};  ///< from the newest to the oldest

    /// Whether the file stood there before anything was known of it.
    bool WasOfNobody() const { return file && file->before.exists && file->kindBefore == FileKind::Original; }
};

/// What one entry did, or several.
class RecordedChanges {
  public:
    /// From the newest entry to the oldest.
    void Add(const RecordedEntry& entry, const std::vector<RecordedFile>& files);

    /// What comes back is what an earlier entry left, and not what somebody made of it before the first of
    /// these.
    void AddLeft(RecordedChange& change, const RecordedState& left);

    std::list<RecordedChange>& All() { return m_changes; }

    /// A file that none of them wrote; it goes back to what that earlier entry left.
    void AddOthersAlone(std::int64_t entry, const RecordedFile& file);

    /// Whether one of them wrote the file itself, and not only what stands beside it.
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
