#ifndef ZET_CUT_SHORT_H
#define ZET_CUT_SHORT_H

#include <set>
#include <string>

#include "deploy/state/Host.h"
#include "deploy/state/Lock.h"

namespace ZET::Deploy {

/// The files of runs that did not come to their end; nothing is changed.
std::set<std::string> FilesOfCutShort(Host& host);

/// What such runs have written is told by content, their entries in the history are closed, and the temporary
/// files that they left are removed. Returns their files. The lock is the product's own. A history that
/// cannot be used is a `Failure`, or with `goesBack` told.
std::set<std::string> SettleCutShort(Host& host, const WriteLock& lock, bool goesBack = false);

}  // namespace ZET::Deploy

#endif
