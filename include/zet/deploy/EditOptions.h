#ifndef ZET_DEPLOY_EDIT_OPTIONS_H
#define ZET_DEPLOY_EDIT_OPTIONS_H

#include <optional>
#include <string>

namespace ZET::Deploy {

/// How a file is edited in place.
struct EditOptions {
    bool noMarkers = false;  ///< without marker lines
    bool noBackup = false;   ///< without a reserve of the file
    bool force = false;      ///< what a commit wrote, too: a target, or a line that the lists ask for
    bool allBlocks = false;  ///< a restore drops the managed blocks of others, too

    /// Of a parameter or a line: only in the section "[name]"; empty: in the lines before the first one.
    /// Other edits know no sections.
    std::optional<std::string> section = std::nullopt;
};

}  // namespace ZET::Deploy

#endif
