#ifndef ZET_PARAMETER_CHECK_H
#define ZET_PARAMETER_CHECK_H

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "deploy/state/ConfFile.h"
#include "zet/IZETCore.h"
#include "zet/ZETProblem.h"
#include "zet/ZETTypes.h"

namespace ZET::Deploy {

class HostValues;

/// The value as a template expands it, with what placeholders stand for; none if no template can.
std::optional<std::string> ExpandedValue(const std::string& value, const StringMap& values);

/// What is wrong with the value by itself, without its place; none if all is well.
std::optional<Problem> ProblemOfValue(const std::string& name, const std::string& value);

/// Finds parameters whose values make files that no program can use: those without a value, if a placeholder
/// in `used` needs them and has none in `values`, those that hold what was not meant to be part of them, and
/// those that are not of their kind. The `defaults` come before the main configuration file, and the
/// `assumed` after it; the last one counts.
std::vector<Problem> CheckParameterValues(IZETCore& core, const StringMap& values,
                                          const std::set<std::string>& used,
                                          const std::vector<GivenParameter>& defaults = {},
                                          const std::vector<GivenParameter>& assumed = {});

/// Finds values of files, and of the shipped defaults, that end with a carriage return, for the placeholders
/// in `used`: the lines of the others are checked as parameters.
std::vector<Problem> CheckLineEnds(HostValues& values, const std::set<std::string>& used);

/// The parameters among `given` that nobody knows and nothing uses.
struct UnusedParameters {
    std::vector<Problem> mistyped;  ///< with names like those of the product's
    std::vector<Problem> unused;    ///< the host's own
};

/// `file` is the main configuration file, `used` has the placeholders of all templates, and `asked` the
/// parameters that something depends on.
UnusedParameters FindUnusedParameters(const std::string& file, const std::vector<GivenParameter>& given,
                                      const std::set<std::string>& used, const std::set<std::string>& asked);

/// Whether the value is in quotes with a comment behind, as other kinds of files have it.
bool IsQuotedWithComment(std::string_view value);

}  // namespace ZET::Deploy

#endif
