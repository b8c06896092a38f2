#ifndef ZET_DEPLOY_ON_EDIT_H
#define ZET_DEPLOY_ON_EDIT_H

namespace ZET::Deploy {

/// What a commit does with a target that somebody edited since the last one.
enum class OnEdit {
    AsConfigured,  ///< what the parameter ZET_ON_EDIT says; an edit that cannot be kept is refused
    Overwrite,     ///< the history keeps the edit, if there is one
    Refuse,        ///< it is a problem of the plan: nothing is written
    Merge          ///< the target gets the edit and what the template makes of it; a conflict is a problem
};

}  // namespace ZET::Deploy

#endif
