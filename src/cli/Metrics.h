#ifndef ZET_METRICS_H
#define ZET_METRICS_H

#include <string>

#include "zet/deploy/Role.h"
#include "zet/deploy/Status.h"

namespace ZET::Cli {

/// A role's status in numbers, as OpenMetrics text. States without a target are included with 0, so that a
/// monitor always finds every sample. File names are left out, since everybody may read the text.
std::string MetricsOf(Deploy::Role role, const Deploy::RoleStatus& status,
                      const Deploy::TargetStates& states);

}  // namespace ZET::Cli

#endif
