#ifndef ZET_DEPLOY_TEMPLATE_CHECK_H
#define ZET_DEPLOY_TEMPLATE_CHECK_H

#include <string>
#include <vector>

#include "zet/ZETApi.h"
#include "zet/ZETProblem.h"
#include "zet/ZETTypes.h"
#include "zet/deploy/Product.h"

namespace ZET::Deploy {

/// Finds what prevents a template from becoming a usable file: a placeholder without a value or without an
/// end, a value that reproduces itself, unbalanced markers. The problems name `file`; the keys of `values`
/// are whole placeholders. The module renders a template without problems in bounded time; on others it may
/// never return. Needs no product, and may be called at any time by any thread.
ZET_API std::vector<Problem> CheckTemplate(const StringMap& values, const std::string& text,
                                           const std::string& file = "template");

/// As `CheckTemplate` for templates of the host (all if no names are given), with everything else that would
/// make their commit fail, the targets' own check commands included. Nothing is written.
ZET_API std::vector<Problem> CheckTemplates(Product& product,
                                            const std::vector<std::string>& templateNames = {});

}  // namespace ZET::Deploy

#endif
