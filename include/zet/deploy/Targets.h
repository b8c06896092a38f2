#ifndef ZET_DEPLOY_TARGETS_H
#define ZET_DEPLOY_TARGETS_H

#include <set>
#include <string>
#include <vector>

#include "zet/ZETApi.h"
#include "zet/deploy/Product.h"
#include "zet/deploy/Role.h"

namespace ZET::Deploy {

/// An entry of the list of targets: a template and the file that is made from it.
struct ListedTarget {
    std::string templateName;
    std::string path;  ///< as the list has it
    std::set<Role> roles;
    bool isSecret = false;  ///< its text is never shown
    int line = 0;           ///< of its entry in the list
};

/// The targets of the product's role, in the order of the list. A broken list is a `Failure` with all its
/// problems.
ZET_API std::vector<ListedTarget> ListTargets(Product& product);

}  // namespace ZET::Deploy

#endif
