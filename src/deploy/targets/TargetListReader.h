#ifndef ZET_TARGET_LIST_READER_H
#define ZET_TARGET_LIST_READER_H

#include <string>
#include <string_view>

#include "deploy/targets/Targets.h"

namespace ZET::Deploy {

/// Reads a list of targets. One that cannot be read, or that others may write while root runs, is a
/// `Failure`; everything that is wrong inside is a problem, in the order of the lines. A target whose file
/// cannot be told from its entry has no path.
TargetList ReadTargetFile(const std::string& file);

/// The same of its text; `file` is only named.
TargetList ReadTargetText(const std::string& file, std::string_view text);

}  // namespace ZET::Deploy

#endif
