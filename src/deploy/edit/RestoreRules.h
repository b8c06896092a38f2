#ifndef ZET_RESTORE_RULES_H
#define ZET_RESTORE_RULES_H

#include <cstddef>
#include <string>
#include <string_view>

#include "zet/IZETCore.h"

namespace ZET::Deploy {

/// What a restore is about.
struct RestoreRequest {
    std::string path;
    std::string_view text;  ///< of the file, with sound markers; must outlive the request
    std::string pattern;    ///< as `RestoreLine` gets it
    std::string content;    ///< selects the lines, in managed blocks, that the restore is about
    bool allBlocks = false;
    std::size_t linesBefore = 0;  ///< in the file, where `text` is a part of it
};

/// Whether there is anything to restore. The module's restore takes out every managed block, so this throws a
/// `Failure` if blocks would go that the restore is not about, unless `allBlocks` is set. It throws a
/// `UsageError` for a pattern that also selects lines which keep no former line.
bool HasSomethingToRestore(IZETCore& core, const RestoreRequest& request);

}  // namespace ZET::Deploy

#endif
