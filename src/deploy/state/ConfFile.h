#ifndef ZET_CONF_FILE_H
#define ZET_CONF_FILE_H

#include <string>
#include <string_view>
#include <vector>

#include "deploy/state/ParameterCheck.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// A file of lines "NAME=value" beside the main one, and what is wrong in it; lines that are none are left
/// out.
struct ConfFile {
    std::vector<GivenParameter> given;
    std::vector<Problem> problems;
};

/// By the grammar of the main file.
ConfFile ReadConfText(const std::string& file, std::string_view text);

}  // namespace ZET::Deploy

#endif
