#include "text/Placeholders.h"

#include <set>

namespace ZET::Text {

namespace {

std::vector<PlaceholderRange> ReplacedIn(std::string_view templateLine) {
    std::vector<PlaceholderRange> ranges;
    if (HasNoPlaceholders(templateLine)) return ranges;
    for (auto range = NextPlaceholder(templateLine, 0); range.IsClosed();
         range = NextPlaceholder(templateLine, range.end))
        ranges.push_back(range);
    return ranges;
}

}  // namespace

PlaceholderRange NextPlaceholder(std::string_view line, std::size_t from) {
    const std::size_t begin = line.find(kPlaceholderBegin, from);
    if (begin == std::string_view::npos) return {};
    const std::size_t brace = line.find('}', begin);
    return {begin, brace == std::string_view::npos ? brace : brace + 1};
}

std::vector<std::string> PlaceholdersOf(std::string_view templateLine) {
    std::vector<std::string> placeholders;
    std::set<std::string_view> known;
    for (const PlaceholderRange& range : ReplacedIn(templateLine)) {
        const std::string_view placeholder = range.In(templateLine);
        if (known.insert(placeholder).second) placeholders.emplace_back(placeholder);
    }
    return placeholders;
}

std::vector<std::string> PlaceholdersOfValue(std::string_view value) {
    return PlaceholdersOf(std::string(kLineGuard).append(value));
}

std::vector<std::string_view> PiecesBetweenPlaceholders(std::string_view templateLine) {
    std::vector<std::string_view> pieces;
    std::size_t from = 0;
    for (const PlaceholderRange& range : ReplacedIn(templateLine)) {
        pieces.push_back(templateLine.substr(from, range.begin - from));
        from = range.end;
    }
    pieces.push_back(templateLine.substr(from));
    return pieces;
}

}  // namespace ZET::Text
