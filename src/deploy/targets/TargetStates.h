#ifndef ZET_TARGET_STATES_H
#define ZET_TARGET_STATES_H

#include <string>
#include <vector>

#include "deploy/targets/Deployment.h"

namespace ZET {

/// What is recorded of the role.
struct RoleStatus {
    std::string commitTime;  ///< RFC 3339, UTC; empty: never committed
    std::string fileServer;  ///< of a client; empty: none recorded
};

RoleStatus RoleStatusOf(HostProduct& product);

/// A target, compared with what a commit would make of it.
struct TargetState {
    std::string templateName;
    std::string path;     ///< of the real file, links followed
    std::string state;    ///< "in sync", "pending", "edited", "missing", "not committed", "unknown"
    std::string trouble;  ///< why it is unknown
    std::string file;     ///< as the list names it
};

struct TargetStates {
    std::vector<TargetState> targets;
    std::vector<std::string> leftOvers;  ///< committed, and not in the list any more

    bool IsAnyUnknown() const;
    bool IsInSync() const;
};

/// The states of the role's targets: one that cannot be told does not keep that of the others from being
/// told.
TargetStates StatesOfTargets(Deployment& product);

}  // namespace ZET

#endif
