#ifndef ZET_DEPLOY_UNDO_OPTIONS_H
#define ZET_DEPLOY_UNDO_OPTIONS_H

#include <cstdint>
#include <optional>

namespace ZET::Deploy {

/// Which entry is undone, and what happens to files that changed since: unless `force` or `merge` is set,
/// such a file makes the whole undo fail.
struct UndoOptions {
    std::optional<std::int64_t> entry{};  ///< none for the last one
    bool force = false;                   ///< put them back nevertheless
    bool merge = false;                   ///< put them back, and merge the later edits
};

/// As `UndoOptions`, for going back to an entry.
struct RollBackToOptions {
    bool force = false;
    bool keepEdits = false;  ///< leave them as they are
    bool merge = false;      ///< put them back, and merge the later edits
};

}  // namespace ZET::Deploy

#endif
