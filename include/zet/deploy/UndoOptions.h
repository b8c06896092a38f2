#ifndef ZET_DEPLOY_UNDO_OPTIONS_H
#define ZET_DEPLOY_UNDO_OPTIONS_H

#include <cstdint>
#include <optional>

namespace ZET::Deploy {

/// What is taken back, and what becomes of files that are not as it left them: unless one of the two is
/// wanted, they refuse the whole.
struct UndoOptions {
    std::optional<std::int64_t> entry{};  ///< none: the last one
    bool force = false;                   ///< they go back all the same
    bool merge = false;                   ///< what was edited since stays in them
};

/// The same for going back to an entry.
struct RollBackToOptions {
    bool force = false;
    bool keepEdits = false;  ///< they stay as they are
    bool merge = false;      ///< they go back, and what was edited since stays in them
};

}  // namespace ZET::Deploy

#endif
