#include "Expansion.h"

#include <cstddef>
#include <sstream>

namespace ZET {

namespace {

constexpr std::size_t kReplacements = 3000;  // in one line
constexpr std::size_t kGrowth = 100'000;     // bytes that a line may gain

bool LineEnds(std::string line, const StringMap& values) {
    const std::size_t longest = line.size() + kGrowth;
    std::size_t start = line.find("${");
    for (std::size_t done = 0; start != std::string::npos; ++done) {
        const std::size_t end = line.find('}', start);
        if (end == std::string::npos || done == kReplacements || line.size() > longest) return false;
        const auto value = values.find(line.substr(start, end + 1 - start));
        if (value == values.end()) {
            line[start] = '!';
        } else {
            line.replace(start, end + 1 - start, value->second);
        }
        start = line.find("${", start);
    }
    return true;
}

}  // namespace

bool ExpansionEnds(const std::string& text, const StringMap& values) {
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        if (line.starts_with('#')) continue;
        if (!LineEnds(line, values)) return false;
    }
    return true;
}

}  // namespace ZET
