#ifndef ZET_ADOPT_H
#define ZET_ADOPT_H

#include <string>

#include "deploy/targets/Deployment.h"
#include "zet/deploy/FileOutcome.h"

namespace ZET::Deploy {

/// Turns somebody's edit of a committed target into a change of its template's working copy, and keeps
/// placeholders where their values still stand. Throws a `UsageError` for a file that is no committed target.
/// Writes nothing and throws a `Failure` if there are lines that cannot be turned, which it names, or if the
/// template or a parameter changed since the last commit.
FileOutcome AdoptFile(Deployment& product, const std::string& file);

}  // namespace ZET::Deploy

#endif
