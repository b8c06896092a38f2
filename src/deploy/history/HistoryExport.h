#ifndef ZET_HISTORY_EXPORT_H
#define ZET_HISTORY_EXPORT_H

#include <iosfwd>

#include "deploy/targets/Deployment.h"

namespace ZET::Deploy {

/// Exports all entries, from the oldest on. What others did to a file before an entry is a change of its own.
void ExportHistory(Deployment& product, std::ostream& stream);

}  // namespace ZET::Deploy

#endif
