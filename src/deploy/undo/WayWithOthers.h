#ifndef ZET_WAY_WITH_OTHERS_H
#define ZET_WAY_WITH_OTHERS_H

#include "zet/deploy/UndoOptions.h"

namespace ZET::Deploy {

/// What to do with a file that is not as the entry left it.
enum class OthersWork { IsRefused, IsReplaced, IsMerged, Stays };

/// Throws a `UsageError` for options that exclude each other.
OthersWork WayOf(const UndoOptions& options);
OthersWork WayOf(const RollBackToOptions& options);

}  // namespace ZET::Deploy

#endif
