#include "text/Problem.h"

#include <string_view>

namespace ZET {

std::string Problem::Describe() const {
    std::string place = file;
    if (line > 0) place += ":" + std::to_string(line);
    if (column > 0) place += ":" + std::to_string(column);
    return place + ": " + text + " (" + remedy + ")";
}

Fields Problem::ToFields() const {
    Fields fields = {
        {"file", file}, {"line", line}, {"column", column}, {"problem", text}, {"remedy", remedy}};
    if (!output.empty()) fields.emplace_back("output", output);
    return fields;
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

Problem ProblemOf(const std::string& file, const Failure& failure) {
    std::string text = failure.what();
    if (text.starts_with(file + ": ")) text.erase(0, file.size() + 2);
    const std::size_t remedy = text.rfind(" (");
    if (remedy == std::string::npos || !text.ends_with(')'))
        return {file, 0, 0, text, "repair or replace the file"};
    return {file, 0, 0, text.substr(0, remedy), text.substr(remedy + 2, text.size() - remedy - 3)};
}

}  // namespace ZET
