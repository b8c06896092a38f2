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

/// A line "NAME=value" of the main configuration file, which the core has read without complaint, or of a
/// file with defaults.
struct GivenParameter {
    int line = 0;
    int column = 0;  ///< of the value
    std::string name;
    std::string value;
    std::string file{};  ///< empty: the main one
};

/// The last one of the name, which is the one that counts; null: there is none.
const GivenParameter* FindGiven(const std::vector<GivenParameter>& given, const std::string& name);

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

/// Letters, digits and "_", no digit first.
bool IsParameterName(std::string_view name);

/// Whether the product has a parameter of this name.
bool IsOfTheProduct(const std::string& name);

/// The names of all that it has.
std::vector<std::string> NamesOfTheProduct();

/// Whether both values say the same of the parameter: what is yes or no has several words for it.
bool HaveSameMeaning(const std::string& name, const std::string& one, const std::string& other);

/// The placeholder that a parameter is which the product does not have: "${ntp_server}" for "NTP_SERVER".
std::string PlaceholderFor(const std::string& name);

/// The parameter that one of the product's own placeholders gets its value from; empty: it is none of them.
std::string ParameterBehind(const std::string& placeholder);

/// The parameter that one of the product's is made of where nobody gives it; empty: none.
std::string ParameterThatMakes(const std::string& name);

/// The one of `names` that `name` is likely to be meant for; empty when there is none.
std::string NearestName(const std::string& name, const std::vector<std::string>& names);

/// Whether the value is in quotes with a comment behind, as other files have it.
bool IsQuotedWithComment(std::string_view value);

}  // namespace ZET::Deploy

#endif
