#ifndef ZET_METRICS_H
#define ZET_METRICS_H

#include <string>

#include "zet/deploy/Role.h"
#include "zet/deploy/Status.h"

namespace ZET::Cli {

/// What a role's status is in numbers, as OpenMetrics text: what has no target is there with 0, so that who
/// watches never looks for something that was not told. The names of files are not in it, since everybody may
/// read it.
std::string MetricsOf(Deploy::Role role, const Deploy::RoleStatus& status,
                      const Deploy::TargetStates& states);

}  // namespace ZET::Cli

#endif
