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
    std::string content;    ///< selects the lines in the managed blocks that the restore is about
    bool allBlocks = false;
    std::size_t linesBefore = 0;  ///< where `text` is a part of the file
};

/// The module's restore takes out every managed block. Whether there is something to restore at all; a
/// `Failure` when blocks would go that the restore is not about, unless that is wanted; a `UsageError` for a
/// pattern that selects lines which keep no former line.
bool HasSomethingToRestore(IZETCore& core, const RestoreRequest& request);

}  // namespace ZET::Deploy

#endif
