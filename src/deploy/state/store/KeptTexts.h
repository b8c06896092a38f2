#ifndef ZET_KEPT_TEXTS_H
#define ZET_KEPT_TEXTS_H

#include <optional>
#include <string>

#include "deploy/state/store/Database.h"
#include "deploy/state/store/Records.h"
#include "deploy/state/store/StoreLimits.h"

/// The texts of the store, each of which it keeps once.
namespace ZET::Deploy {

/// The file with the numbers of its texts, which are kept from now on, as far as the limits let them. A long
/// text is kept as what it has not of the one before.
RecordedFile WithTexts(Database& database, const StoreLimits& limits, const FileToRecord& file);

/// The same of what the file is afterwards: `after`, to which the numbers come. `before` is the text that the
/// file had, where it is kept.
RecordedState AfterWithTexts(Database& database, const StoreLimits& limits, const FileToRecord& file,
                             RecordedState after, std::optional<TextNumber> before = std::nullopt);

/// One that is not there, or not as it was written, is a `DamagedRow`.
std::string TextAt(Database& database, TextNumber number);

/// Texts that are made from that one are kept whole from now on. One that cannot be read stays as it is: it
/// is lost, whether its base is there or not.
void MakeWholeWithout(Database& database, TextNumber base);

}  // namespace ZET::Deploy

#endif
