#ifndef ZET_CORE_STATUS_WRITER_H
#define ZET_CORE_STATUS_WRITER_H

#include <ostream>

#include "zet/ZETTypes.h"

namespace ZET::Core {

/// Writes `settings` and, in its place among them, the present time as "COMMIT_TIME" (RFC 3339, UTC): one
/// line key=value for each, sorted by key. Flushes; a stream that fails throws `EZETError`.
void WriteStatusLines(std::ostream& stream, StringMap settings);

}  // namespace ZET::Core

#endif
