#ifndef ZET_DEPLOY_TEMPLATE_CHECK_H
#define ZET_DEPLOY_TEMPLATE_CHECK_H

#include <string>
#include <vector>

#include "zet/ZETApi.h"
#include "zet/ZETProblem.h"
#include "zet/ZETTypes.h"
#include "zet/deploy/Product.h"

namespace ZET::Deploy {

/// What keeps a template from becoming a file that one would want: a placeholder without a value or without
/// an end, a value that reproduces itself, markers that are not balanced. `file` is named in the problems;
/// `values` has whole placeholders as keys. A template that is found fine is one that the module renders in
/// bounded time: of others it might never return. Needs no product, and may be called at any time by any
/// thread.
ZET_API std::vector<Problem> CheckTemplate(const StringMap& values, const std::string& text,
                                           const std::string& file = "template");

/// The same of a template of the host, and everything else that would keep a commit of these templates, all
/// when there are none, from succeeding, the targets' own check commands included. Nothing is written.
ZET_API std::vector<Problem> CheckTemplates(Product& product,
                                            const std::vector<std::string>& templateNames = {});

}  // namespace ZET::Deploy

#endif
