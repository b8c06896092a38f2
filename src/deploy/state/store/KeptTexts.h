#ifndef ZET_KEPT_TEXTS_H
#define ZET_KEPT_TEXTS_H

#include <optional>
#include <string>

#include "deploy/state/store/Database.h"
#include "deploy/state/store/Records.h"
#include "deploy/state/store/StoreLimits.h"

/// The texts of the store, which keeps each of them once.
namespace ZET::Deploy {

/// The file with the numbers of its texts, which are kept from now on as far as the limits allow. A long text
/// is kept as what differs from the one before.
RecordedFile WithTexts(Database& database, const StoreLimits& limits, const FileToRecord& file);

/// The same for the state afterwards: `after` with the numbers of its texts. `before` is the text that the
/// file had, if that is kept.
RecordedState AfterWithTexts(Database& database, const StoreLimits& limits, const FileToRecord& file,
                             RecordedState after, std::optional<TextNumber> before = std::nullopt);

/// Throws a `DamagedRow` if the text is missing, or not as it was written.
std::string TextAt(Database& database, TextNumber number);

/// From now on, texts that are made from this one are kept whole. One that cannot be read stays as it is, as
/// it is lost anyway.
void MakeWholeWithout(Database& database, TextNumber base);

}  // namespace ZET::Deploy

#endif
