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
    std::string workingCopy;             ///< its path, whether it is there or not
    bool isInstalled = false;            ///< the working copy is there
    std::string list;                    ///< the list that it is first in
    int line = 0;                        ///< of its entry there
    std::vector<std::string> changedBy;  ///< the later lists that change its entry
    std::string whyNot;                  ///< why it is not in force; empty: it is
};

/// The templates of both roles, in force or not, in the order of the lists. A list that is broken is a
/// `Failure` with all its problems.
ZET_API std::vector<ListedTemplate> ListTemplates(Product& product);

/// A working copy, compared with the shipped template and with the shipped text that it was made from.
struct TemplateState {
    std::string name;
    std::string path;     ///< of the working copy
    std::string shipped;  ///< the path of the shipped template
    std::string state;    ///< "own": nothing was ever shipped; "not shipped": it is not any more;
                          ///< "current", "edited", "newer shipped", "edited, newer shipped", "not installed",
                          ///< "unknown": it differs, and nobody knows what it was made from
    bool hasNewer = false;  ///< another text is shipped than the one that it was made from
    std::string trouble;    ///< why it is unknown, where it cannot even be looked at; else empty
};

/// Of these templates, of all that the list has for the role when there are no names. A name that leaves the
/// directory of the templates is a `UsageError`; a template that is not there at all is "unknown". Nothing is
/// written.
ZET_API std::vector<TemplateState> TemplateStates(Product& product,
                                                  const std::vector<std::string>& names = {});

/// Brings the working copies up to the shipped templates: one that nobody edited is replaced, and an edited
/// one merged with what is newer. All or nothing: edits that conflict, and a copy of which nobody knows what
/// it was made from, are a `Failure` with all such problems. `observer` is told, as with `Commit`.
ZET_API Outcome UpgradeTemplates(Product& product, const std::vector<std::string>& names = {},
                                 Observer* observer = nullptr);

}  // namespace ZET::Deploy

#endif
