#ifndef ZET_CONF_FILE_H
#define ZET_CONF_FILE_H

#include <string>
#include <string_view>
#include <vector>

#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// A line "NAME=value" of the main configuration file, which the core has read without complaint, or of a
/// file with defaults.
struct GivenParameter {
    int line = 0;
    int column = 0;  ///< of the value
    std::string name;
    std::string value;
    std::string file{};  ///< empty: the main file
};

/// The last one with this name, which is the one that counts; null if there is none.
const GivenParameter* FindGiven(const std::vector<GivenParameter>& given, const std::string& name);

/// What a file of lines "NAME=value" gives, and what is wrong in it. Faulty lines give nothing.
struct ConfFile {
    std::vector<GivenParameter> given;
    std::vector<Problem> problems;
};

/// Reads the text by the grammar of the main file. `file` is its name in the result.
ConfFile ReadConfText(const std::string& file, std::string_view text);

/// What the main file, which has this path, gives. Throws a `Failure` if it cannot be read.
std::vector<GivenParameter> GivenIn(const std::string& mainFile);

}  // namespace ZET::Deploy

#endif
