#ifndef ZET_CUT_SHORT_H
#define ZET_CUT_SHORT_H

#include <set>
#include <string>

#include "deploy/state/Host.h"
#include "deploy/state/Lock.h"

namespace ZET::Deploy {

/// The files of runs that did not come to their end; nothing is changed.
std::set<std::string> FilesOfCutShort(Host& host);

/// Finds out, by comparing contents, what such runs wrote, closes their entries in the history, and removes
/// the temporary files that they left. Returns their files. The lock is the product's own. An unusable
/// history is a `Failure`, or, where it is not needed, reported as a warning.
std::set<std::string> SettleCutShort(Host& host, const WriteLock& lock, Purpose purpose = Purpose::Writes);

}  // namespace ZET::Deploy

#endif
