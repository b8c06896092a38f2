#ifndef ZET_KEPT_TEXTS_H
#define ZET_KEPT_TEXTS_H

#include <string>

#include "deploy/state/store/Database.h"
#include "deploy/state/store/Records.h"
#include "deploy/state/store/StoreLimits.h"

/// The texts of the store, each of which it keeps once.
namespace ZET::Deploy {

/// The file with the numbers of its texts, which are kept from now on, as far as the limits let them.
RecordedFile WithTexts(Database& database, const StoreLimits& limits, const FileToRecord& file);

/// The same of what the file is afterwards: `after`, to which the numbers come.
RecordedState AfterWithTexts(Database& database, const StoreLimits& limits, const FileToRecord& file,
                             RecordedState after);

/// One that is not there, or not as it was written, is a `DamagedRow`.
std::string TextAt(Database& database, TextNumber number);

}  // namespace ZET::Deploy

#endif
