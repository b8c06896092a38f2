#ifndef ZET_TEMPLATE_FILE_CHECK_H
#define ZET_TEMPLATE_FILE_CHECK_H

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "deploy/targets/Deployment.h"
#include "text/TemplateCheck.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// What was seen of one template, and the problems that concern it alone.
struct CheckedTemplate {
    std::vector<Problem> problems{};
    bool isWorkingCopy = false;          ///< and not the pristine template
    std::optional<mode_t> modeOfCopy{};  ///< of the working copy, if it is no link
    std::uintmax_t size = 0;
};

CheckedTemplate CheckTemplate(Deployment& product, const std::string& templateName,
                              Text::ValuesToCheck& values);

/// Only the problems, with the host's template values.
std::vector<Problem> CheckTemplateFile(Deployment& product, const std::string& templateName);

/// Whether there are none. The module would never return from some templates that have problems.
bool CanBeRendered(Deployment& product, const std::string& templateName);

}  // namespace ZET::Deploy

#endif
