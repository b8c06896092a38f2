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

/// The ways out where an edit stops a commit; the last one loses it.
inline constexpr char kOtherWay[] = ZET_TEXT("--on-edit=overwrite replaces it, and the history keeps it");
inline constexpr char kLastWay[] = ZET_TEXT("--on-edit=overwrite replaces it all the same");

/// What ZET_ON_EDIT asks for. "overwrite" is not said in words: then an edit is only replaced where it is
/// kept.
OnEdit ConfiguredOnEdit(Host& host);

/// Brings what others changed in a target together with what its template makes of it.
class EditMerge {
  public:
    EditMerge(Host& host, const Staging& staging, const KnownFiles& known)
        : m_host(host), m_staging(staging), m_known(known) {}

    /// Of a target that holds what was merged before: where its rendering is as it was then, its text stays.
    void KeepMerged(PlannedTarget& planned) const;

    /// Gives the target the rendering with what others changed in the file. What keeps it from that is
    /// returned; the target is as it was then.
    std::vector<Problem> Merge(PlannedTarget& planned) const;

  private:
    std::vector<Problem> MergeWith(PlannedTarget& planned, TextNumber base) const;
    void Take(PlannedTarget& planned, const std::string& text) const;

    Host& m_host;
    const Staging& m_staging;
    const KnownFiles& m_known;
};

/// Whether the text of a file, as the product left it, is one that was merged with this rendering.
bool IsMergedWith(Host& host, const KnownFile& known, const std::string& rendered);

/// Compares the file that is there with the staged one.
FileOutcome::Result ChangeOf(const PlannedTarget& planned);

}  // namespace ZET::Deploy

#endif
