#ifndef ZET_ADOPT_H
#define ZET_ADOPT_H

#include <string>

#include "deploy/targets/Deployment.h"
#include "zet/deploy/FileOutcome.h"

namespace ZET::Deploy {

/// Turns what somebody changed in a committed target into a change of its template's working copy, of which
/// the outcome tells; placeholders stay where their values do. A file that is no such target is a
/// `UsageError`. What cannot be turned is a `Failure` with the lines, and nothing is written; so is a
/// template or a parameter that changed since the last commit.
FileOutcome AdoptFile(Deployment& product, const std::string& file);

}  // namespace ZET::Deploy

#endif
