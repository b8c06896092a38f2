#ifndef ZET_UNMARKED_EDITS_H
#define ZET_UNMARKED_EDITS_H

#include "deploy/state/Host.h"
#include "deploy/state/store/Records.h"

namespace ZET::Deploy {

/// Whether the product has edited more of the file than the lines of its managed blocks, as far as the
/// history keeps that. Reports an unusable history as a warning.
bool HoldsUnmarkedEdits(Host& host, const KnownFile& known);

}  // namespace ZET::Deploy

#endif
