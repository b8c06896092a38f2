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

/// Letters, digits and "_", the first one no digit.
bool IsParameterName(std::string_view name);

/// Reads the parameter file and gives each parameter in it to `take`, in the order of the lines. Blanks may
/// stand before the name but not between name and "="; everything after "=" is the value. Lines of blanks
/// and lines whose first character other than a blank is "#" are left out. Anything else, and a file that
/// cannot be read, throws `EZETError` with path, line and remedy.
void ReadParameterFile(const std::string& path, const std::function<void(const ParameterLine&)>& take);

}  // namespace ZET::Core

#endif
