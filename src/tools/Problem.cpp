#include "Problem.h"

namespace ZET {

std::string Problem::Describe() const {
    std::string place = file;
    if (line > 0) place += ":" + std::to_string(line);
    if (column > 0) place += ":" + std::to_string(column);
    return place + ": " + text + " (" + remedy + ")";
}

Fields Problem::ToFields() const {
    return {{"file", file}, {"line", line}, {"column", column}, {"problem", text}, {"remedy", remedy}};
}

}  // namespace ZET
