#ifndef ZET_TARGET_LIST_READER_H
#define ZET_TARGET_LIST_READER_H

#include <string>

#include "deploy/targets/Targets.h"

namespace ZET::Deploy {

/// Reads a list of targets. One that cannot be read, or that others may write while root runs, is a
/// `Failure`; everything that is wrong inside is a problem, in the order of the lines. A target whose file
/// cannot be told from its section has no path.
TargetList ReadTargetFile(const std::string& file);

}  // namespace ZET::Deploy

#endif
