#ifndef ZET_CUT_SHORT_H
#define ZET_CUT_SHORT_H

#include <set>
#include <string>

#include "deploy/state/Host.h"
#include "deploy/state/Lock.h"

namespace ZET::Deploy {

/// The files of runs that have not come to their end. Changes nothing.
std::set<std::string> FilesOfCutShort(Host& host);

/// Finds out, by comparing contents, what such runs wrote, closes their entries in the history, and removes
/// the temporary files that they left. Returns their files. Only under the product's own lock. An unusable
/// history is a warning if `purpose` does not need it, else a `Failure`.
std::set<std::string> SettleCutShort(Host& host, const WriteLock& lock, Purpose purpose = Purpose::Writes);

}  // namespace ZET::Deploy

#endif
