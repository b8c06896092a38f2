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

/// What was seen of one template, and its problems as far as they concern it alone.
struct CheckedTemplate {
    std::vector<Problem> problems{};
    bool isWorkingCopy = false;    ///< and no pristine one
    std::optional<mode_t> mode{};  ///< of that working copy, where it is no link
    std::uintmax_t size = 0;
};

CheckedTemplate CheckTemplate(Deployment& product, const std::string& templateName,
                              Text::ValuesToCheck& values);

/// The problems alone.
std::vector<Problem> CheckTemplateFile(Deployment& product, const std::string& templateName,
                                       const StringMap& values);

}  // namespace ZET::Deploy

#endif
