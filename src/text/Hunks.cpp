#include "text/Hunks.h"

#include <charconv>

#include "text/Lines.h"

namespace ZET::Text {

namespace {

struct LineRange {
    std::size_t first = 0;
    std::size_t last = 0;
};

bool TakeNumber(std::string_view& text, std::size_t& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return true;
}

std::optional<LineRange> TakeRange(std::string_view& text) {
    LineRange range;
    if (!TakeNumber(text, range.first)) return std::nullopt;
    range.last = range.first;
    if (!text.starts_with(',')) return range;
    text.remove_prefix(1);
    return TakeNumber(text, range.last) ? std::optional(range) : std::nullopt;
}

std::size_t CountOf(const LineRange& range) {
    return range.last - range.first + 1;
}

std::optional<Hunk> HunkOf(std::string_view line) {
    const auto before = TakeRange(line);
    if (!before || line.empty()) return std::nullopt;
    const char kind = line.front();
    std::string_view rest = line.substr(1);
    const auto after = TakeRange(rest);
    if (!after || !rest.empty()) return std::nullopt;
    switch (kind) {
        case 'a':
            return Hunk{before->first + 1, 0, after->first, CountOf(*after)};
        case 'd':
            return Hunk{before->first, CountOf(*before), after->first + 1, 0};
        case 'c':
            return Hunk{before->first, CountOf(*before), after->first, CountOf(*after)};
        default:
            return std::nullopt;
    }
}

/// The lines themselves, what stands between them, and that one has no end.
bool IsText(std::string_view line) {
    return line.starts_with('<') || line.starts_with('>') || line.starts_with('\\') || line == "---";
}

}  // namespace

std::optional<std::vector<Hunk>> HunksOf(std::string_view difference) {
    std::vector<Hunk> hunks;
    while (!difference.empty()) {
        const std::string_view line = TakeLine(difference).text;
        if (IsText(line)) continue;
        const auto hunk = HunkOf(line);
        if (!hunk) return std::nullopt;
        hunks.push_back(*hunk);
    }
    return hunks;
}

}  // namespace ZET::Text
