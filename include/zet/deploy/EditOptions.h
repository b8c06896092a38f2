#ifndef ZET_DEPLOY_EDIT_OPTIONS_H
#define ZET_DEPLOY_EDIT_OPTIONS_H

#include <optional>
#include <string>

namespace ZET::Deploy {

/// How a file is edited in place.
struct EditOptions {
    bool noMarkers = false;  ///< write no marker lines
    bool noBackup = false;   ///< keep no reserve of the file
    /// Also edit what a commit wrote: a target, or a line that the lists ask for. Also part lines that go on
    /// in the next one.
    bool force = false;
    bool allBlocks = false;  ///< a restore also drops the managed blocks of others

    /// Restricts the edit of a parameter or line to the section "[name]"; if empty, to the lines before the
    /// first section. Other edits ignore sections.
    std::optional<std::string> section = std::nullopt;
};

}  // namespace ZET::Deploy

#endif
