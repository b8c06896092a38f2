#ifndef ZET_PARAMETER_CHECK_H
#define ZET_PARAMETER_CHECK_H

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "zet/IZETCore.h"
#include "zet/ZETProblem.h"
#include "zet/ZETTypes.h"

namespace ZET::Deploy {

/// A line "NAME=value" of the main configuration file, which the core has read without complaint.
struct GivenParameter {
    int line = 0;
    int column = 0;  ///< of the value
    std::string name;
    std::string value;
};

std::vector<GivenParameter> GivenParameters(std::string_view text);

/// Parameters whose values make files that no program can use: those without a value, as far as the
/// placeholders in `used` ask for them and `values` has none, those that hold what was not meant to be part
/// of them, and those that are not of their kind.
std::vector<Problem> CheckParameterValues(IZETCore& core, const StringMap& values,
                                          const std::set<std::string>& used);

/// Parameters in the main configuration file that nobody knows or uses; `used` has the placeholders of all
/// templates.
std::vector<Problem> CheckParameterNames(IZETCore& core, const std::set<std::string>& used);

/// The one of `names` that `name` is likely to be meant for; empty when there is none.
std::string NearestName(const std::string& name, const std::vector<std::string>& names);

/// Whether the value is in quotes with a comment behind, as other files have it.
bool IsQuotedWithComment(std::string_view value);

}  // namespace ZET::Deploy

#endif
