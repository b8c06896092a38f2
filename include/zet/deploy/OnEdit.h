#ifndef ZET_DEPLOY_ON_EDIT_H
#define ZET_DEPLOY_ON_EDIT_H

namespace ZET::Deploy {

/// What a commit does with a target that somebody edited since the last one.
enum class OnEdit {
    AsConfigured,  ///< as the parameter ZET_ON_EDIT says; an edit that cannot be kept is refused
    Overwrite,     ///< overwrite it; the history keeps the edit, if there is one
    Refuse,        ///< report a problem of the plan: nothing is written
    Merge          ///< combine the edit with what the template makes; a conflict is a problem
};

}  // namespace ZET::Deploy

#endif
