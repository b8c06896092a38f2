#ifndef ZET_DEPLOY_TEMPLATES_H
#define ZET_DEPLOY_TEMPLATES_H

#include <set>
#include <string>
#include <vector>

#include "zet/ZETApi.h"
#include "zet/deploy/Outcome.h"
#include "zet/deploy/Product.h"
#include "zet/deploy/Role.h"

namespace ZET::Deploy {

/// A template of the list.
struct ListedTemplate {
    std::string name;
    std::string target;  ///< as the list has it
    std::set<Role> roles;
    std::string workingCopy;             ///< its path, even if it does not exist
    bool isInstalled = false;            ///< the working copy exists
    std::string list;                    ///< the first list that has it
    int line = 0;                        ///< of its entry there
    std::vector<std::string> changedBy;  ///< the later lists that change its entry
    std::string whyNot;                  ///< why it is not in force; empty if it is
};

/// The templates of both roles, in force or not, in the order of the lists. A broken list is a `Failure` with
/// all its problems.
ZET_API std::vector<ListedTemplate> ListTemplates(Product& product);

/// A working copy, compared with the shipped template and with the shipped text that it was made from.
struct TemplateState {
    std::string name;
    std::string path;       ///< of the working copy
    std::string shipped;    ///< the path of the shipped template
    std::string state;      ///< "own": never shipped; "not shipped": no longer shipped; "current", "edited",
                            ///< "newer shipped", "edited, newer shipped", "not installed", "unknown": it
                            ///< differs, and its origin is unknown
    bool hasNewer = false;  ///< the shipped text or mode is not the one that it was made from
    std::string trouble;    ///< why it is unknown, if it could not be read; else empty
};

/// The states of these templates, or of all that the list has for the role if there are no names. A name that
/// leaves the directory of the templates is a `UsageError`; a template that does not exist is "unknown".
/// Nothing is written.
ZET_API std::vector<TemplateState> TemplateStates(Product& product,
                                                  const std::vector<std::string>& names = {});

/// Updates the working copies to the shipped templates: an unedited one is replaced, an edited one is merged
/// with the newer text. All or nothing: edits that conflict, and copies of unknown origin, are a `Failure`
/// with all such problems. `observer` works as in `Commit`.
ZET_API Outcome UpgradeTemplates(Product& product, const std::vector<std::string>& names = {},
                                 Observer* observer = nullptr);

}  // namespace ZET::Deploy

#endif
