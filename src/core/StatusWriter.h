#ifndef ZET_CORE_STATUS_WRITER_H
#define ZET_CORE_STATUS_WRITER_H

#include <ostream>

#include "zet/ZETTypes.h"

namespace ZET::Core {

/// Writes `settings` and the present time as "COMMIT_TIME" (RFC 3339, UTC), one line key=value each, sorted
/// by key. Flushes; throws `EZETError` if the stream fails.
void WriteStatusLines(std::ostream& stream, StringMap settings);

}  // namespace ZET::Core

#endif
