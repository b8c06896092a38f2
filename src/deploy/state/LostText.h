#ifndef ZET_LOST_TEXT_H
#define ZET_LOST_TEXT_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "deploy/state/CapturedFile.h"
#include "deploy/state/Host.h"
#include "deploy/state/store/Records.h"
#include "deploy/state/store/StoreLimits.h"

namespace ZET::Deploy {

/// Warns if the history does not keep a text of that size, which somebody made and a command replaces. The
/// reader knows the file by `name`.
void WarnOfLostText(Host& host, const std::string& name, std::uint64_t size);

/// The same for the file at `path`, which a command would replace by `after`, unless the reserve has the
/// text.
void WarnOfLossToCome(Host& host, const std::string& path, const std::optional<CapturedFile>& after);

/// Reports if the history does not keep a text of the file at `path`, which a command has written: the former
/// or the present one. `untouched` names the files that the command did not write after all.
void TellUnkept(Host& host, const StoreLimits& limits, const RecordedFile& file, const std::string& path,
                const std::vector<std::string>& untouched);

}  // namespace ZET::Deploy

#endif
