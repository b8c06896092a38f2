#ifndef ZET_EDIT_MERGE_H
#define ZET_EDIT_MERGE_H

#include <string>
#include <vector>

#include "deploy/host/Staging.h"
#include "deploy/host/Words.h"
#include "deploy/state/KnownFiles.h"
#include "deploy/targets/PlannedTarget.h"
#include "zet/ZETProblem.h"
#include "zet/deploy/OnEdit.h"

namespace ZET::Deploy {

/// The remedies where an edit stops a commit; the last one loses the edit.
inline constexpr char kOtherWay[] = ZET_TEXT("--on-edit=overwrite replaces it, and the history keeps it");
inline constexpr char kLastWay[] = ZET_TEXT("--on-edit=overwrite replaces it all the same");

/// What ZET_ON_EDIT asks for. "overwrite" gives `AsConfigured`, with which an edit is only replaced if it is
/// kept.
OnEdit ConfiguredOnEdit(Host& host);

/// Merges what others changed in a target with what its template makes of it.
class EditMerge {
  public:
    EditMerge(Host& host, const Staging& staging, const KnownFiles& known)
        : m_host(host), m_staging(staging), m_known(known) {}

    /// For a target that holds an earlier merge: if its rendering is the same as then, its text stays.
    void KeepMerged(PlannedTarget& planned) const;

    /// Gives the target a text with both the rendering and what others changed in the file. Returns what
    /// keeps it from that, and leaves the target as it is then.
    std::vector<Problem> Merge(PlannedTarget& planned) const;

  private:
    std::vector<Problem> MergeWith(PlannedTarget& planned, TextNumber base) const;
    void Take(PlannedTarget& planned, const std::string& text) const;

    Host& m_host;
    const Staging& m_staging;
    const KnownFiles& m_known;
};

/// Whether the text of a file, as the product left it, was merged with this rendering.
bool IsMergedWith(Host& host, const KnownFile& known, const std::string& rendered);

/// Whether the product left the file with this rendering: by the last commit, which wrote a status, or by one
/// of the edits since, which are on record one by one.
bool WasLeftAs(Host& host, const KnownFile& known, const std::string& rendered);

/// Compares the file that is there with the staged one.
FileOutcome::Result ChangeOf(const PlannedTarget& planned);

}  // namespace ZET::Deploy

#endif
