#ifndef ZET_CORE_PARAMETER_FILE_H
#define ZET_CORE_PARAMETER_FILE_H

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace ZET::Core {

/// A line "NAME=value" of the parameter file.
struct ParameterLine {
    std::size_t number;
    std::string_view name;
    std::string_view value;
};

/// Whether `name` consists of letters, digits and "_" and does not begin with a digit.
bool IsParameterName(std::string_view name);

/// Reads the parameter file and passes each parameter to `take`, in the order of the lines. Blanks may
/// precede the name but not the "="; everything after "=" is the value. Blank lines, and lines whose first
/// non-blank character is "#", are skipped. Anything else, and a file that cannot be read, throws `EZETError`
/// with path, line and remedy.
void ReadParameterFile(const std::string& path, const std::function<void(const ParameterLine&)>& take);

}  // namespace ZET::Core

#endif
