#ifndef ZET_COMMIT_PLAN_H
#define ZET_COMMIT_PLAN_H

#include <string>
#include <vector>

#include "deploy/host/Diff.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Staging.h"
#include "deploy/state/Manifest.h"
#include "deploy/state/Session.h"
#include "deploy/targets/ShownDiff.h"
#include "deploy/targets/Targets.h"

namespace ZET {

/// What a commit would do to one target.
struct PlannedTarget {
    enum class Change { None, Modify, Create };

    Target target;
    std::string path;    ///< of the real file, links followed
    std::string staged;  ///< the file as it would be
    Change change = Change::None;
    bool isTouched = false;     ///< the file is none of those that the roles recorded at their commits
    bool isUnrecorded = false;  ///< the product had to do with the file, but no commit recorded it as it is
    bool isReserved = false;    ///< what the file holds is what its reserve holds
    FileVersion version;        ///< of what was there when the plan was made
    FileState before;
    FileState after;

    /// Somebody edited or removed the file since the product wrote it.
    bool IsOthersWork() const { return change != Change::None && (isTouched || HoldsUnkeptText()); }

    /// Nothing but the file itself has what it holds. What a commit was killed at is as it was reserved.
    bool HoldsUnkeptText() const { return isUnrecorded && before.exists && !isReserved; }
};

/// Renders every target in the private directory, has its own check command look at the result, and compares
/// it with what is there. What cannot be rendered or is refused by its check is a `Failure`.
std::vector<PlannedTarget> PlanTargets(Session& session, const Staging& staging,
                                       const std::vector<Target>& targets, const Manifest& manifest);

/// Whether the text is not for everybody: that of the file as it is, as it would be, or of its template.
bool IsPrivate(Session& session, const PlannedTarget& planned);

/// The change as far as it is wanted and shown; empty where nothing changes.
ShownDiff DiffOf(Session& session, const PlannedTarget& planned);

}  // namespace ZET

#endif
