#ifndef ZET_TEMPLATE_STATES_H
#define ZET_TEMPLATE_STATES_H

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "deploy/targets/TemplateFiles.h"
#include "zet/deploy/Templates.h"

namespace ZET::Deploy {

/// The texts that make a template's state; none: there is no such text.
struct TemplateTexts {
    std::optional<std::string> copy;
    std::optional<std::string> shipped;
    std::optional<std::string> base;  ///< what the copy was made from; none: nobody knows
    std::optional<mode_t> newerMode;  ///< what is shipped by now, if the copy has the mode that it was given

    bool IsCurrent() const { return copy && copy == shipped; }
    bool IsKnown() const { return IsCurrent() || base; }
    bool IsEdited() const { return copy && base && !IsCurrent() && copy != base; }
    bool HasNewerText() const { return copy && base && shipped && !IsCurrent() && shipped != base; }
    bool HasNewer() const { return HasNewerText() || newerMode; }
};

/// Throws a `Failure` for a link that leads out of the root directory, and for what cannot be read.
TemplateTexts ReadTexts(Host& host, const TemplateFiles& files);

const char* StateOf(const TemplateTexts& texts);

std::vector<ListedTemplate> ListTemplates(Host& host);

/// If one state cannot be told, the others still are.
std::vector<TemplateState> TemplateStates(Host& host, const std::vector<std::string>& names);

}  // namespace ZET::Deploy

#endif
