#ifndef ZET_TEMPLATE_STATES_H
#define ZET_TEMPLATE_STATES_H

#include <optional>
#include <string>
#include <vector>

#include "deploy/targets/TemplateFiles.h"
#include "zet/deploy/Templates.h"

namespace ZET::Deploy {

/// The texts that a template's state is made of; none: there is no such text.
struct TemplateTexts {
    std::optional<std::string> copy;
    std::optional<std::string> shipped;
    std::optional<std::string> base;  ///< what the copy was made from; none: nobody knows

    bool IsCurrent() const { return copy && copy == shipped; }
    bool IsKnown() const { return IsCurrent() || base; }
    bool IsEdited() const { return copy && base && !IsCurrent() && copy != base; }
    bool HasNewer() const { return copy && base && shipped && !IsCurrent() && shipped != base; }
};

/// A link that leads out of the root directory, and what cannot be read, is a `Failure`.
TemplateTexts ReadTexts(Host& host, const TemplateFiles& files);

const char* StateOf(const TemplateTexts& texts);

std::vector<ListedTemplate> ListTemplates(Host& host);

/// One whose state cannot be told does not keep that of the others from being told.
std::vector<TemplateState> TemplateStates(Host& host, const std::vector<std::string>& names);

}  // namespace ZET::Deploy

#endif
