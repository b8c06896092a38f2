#include "zet/ZETProblem.h"

#include <string_view>

namespace ZET {

std::string Problem::Place() const {
    std::string place = file;
    if (line > 0) place += ":" + std::to_string(line);
    if (column > 0) place += ":" + std::to_string(column);
    return place;
}

std::string Problem::Describe() const {
    const std::string place = textNamesFile ? "" : Place();
    return (place.empty() ? "" : place + ": ") + text + (remedy.empty() ? "" : " (" + remedy + ")");
}

void Problem::HideQuoted(const std::string& excuse) {
    if (quoted.empty()) return;
    constexpr std::string_view kLeftOut = "...";
    for (std::size_t place = 0; (place = text.find(quoted, place)) != std::string::npos;
         place += kLeftOut.size())
        text.replace(place, quoted.size(), kLeftOut);
    text += ", " + excuse;
    quoted.clear();
}

}  // namespace ZET
