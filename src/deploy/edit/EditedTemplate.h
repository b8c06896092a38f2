#ifndef ZET_EDITED_TEMPLATE_H
#define ZET_EDITED_TEMPLATE_H

#include <string>

#include "deploy/host/Staging.h"
#include "deploy/targets/Deployment.h"

namespace ZET::Deploy {

/// A target that somebody edited, and the template that it was made from.
struct EditedTarget {
    std::string path;
    std::string templateName;
    std::string workingCopy;
};

/// The template's text with the edit that made `edited` of what the template renders to. Throws a `Failure`
/// if no template can be told from which that would be made, or if it is one that the next commit would
/// refuse.
std::string TemplateWithEdit(Deployment& product, const Staging& staging, const EditedTarget& target,
                             const std::string& rendered, const std::string& edited);

/// Fails because no template can be told.
[[noreturn]] void FailToTrace(const EditedTarget& target);

}  // namespace ZET::Deploy

#endif
