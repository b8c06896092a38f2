#ifndef ZET_SERVICE_NAMES_H
#define ZET_SERVICE_NAMES_H

#include <set>
#include <string>

#include "deploy/targets/Deployment.h"

namespace ZET::Deploy {

/// With SERVICE_DISCOVERY, templates name hosts that only the domain's name service can know. Warns of each
/// that the placeholders in `used` bring into a file and for which this host finds no address. Looks nothing
/// up below another root: the host there has a name service of its own.
void WarnOfServiceNames(Deployment& product, const std::set<std::string>& used);

}  // namespace ZET::Deploy

#endif
