#ifndef ZET_PARAMETER_CHECK_H
#define ZET_PARAMETER_CHECK_H

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "deploy/state/ConfFile.h"
#include "zet/IZETCore.h"
#include "zet/ZETProblem.h"
#include "zet/ZETTypes.h"

namespace ZET::Deploy {

/// Parameters whose values make files that no program can use: those without a value, as far as the
/// placeholders in `used` ask for them and `values` has none, those that hold what was not meant to be part
/// of them, and those that are not of their kind. Before those of the main configuration file there are the
/// `defaults`, and behind them those that are `assumed`.
std::vector<Problem> CheckParameterValues(IZETCore& core, const StringMap& values,
                                          const std::set<std::string>& used,
                                          const std::vector<GivenParameter>& defaults = {},
                                          const std::vector<GivenParameter>& assumed = {});

/// Of `given`, the parameters that nobody knows and nothing uses.
struct UnusedParameters {
    std::vector<Problem> mistyped;  ///< with names like those of the product
    std::vector<Problem> unused;    ///< of the host's own
};

/// `file` is the main configuration file, `used` has the placeholders of all templates, and `asked` the
/// parameters that something depends on.
UnusedParameters FindUnusedParameters(const std::string& file, const std::vector<GivenParameter>& given,
                                      const std::set<std::string>& used, const std::set<std::string>& asked);

/// Whether the value is in quotes with a comment behind, as other files have it.
bool IsQuotedWithComment(std::string_view value);

}  // namespace ZET::Deploy

#endif
