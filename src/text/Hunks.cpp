#include "text/Hunks.h"

#include <charconv>

#include "text/Lines.h"

namespace ZET::Text {

namespace {

/// "12,15", or "12" alone.
struct Numbers {
    std::size_t first = 0;
    std::optional<std::size_t> second;
};

bool TakeNumber(std::string_view& text, std::size_t& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return true;
}

bool TakeOff(std::string_view& text, std::string_view beginning) {
    if (!text.starts_with(beginning)) return false;
    text.remove_prefix(beginning.size());
    return true;
}

std::optional<Numbers> TakeNumbers(std::string_view& text) {
    Numbers numbers;
    if (!TakeNumber(text, numbers.first)) return std::nullopt;
    if (!TakeOff(text, ",")) return numbers;
    return TakeNumber(text, numbers.second.emplace()) ? std::optional(numbers) : std::nullopt;
}

/// The number of lines in the range.
std::size_t CountOf(const Numbers& range) {
    return range.second.value_or(range.first) - range.first + 1;
}

std::optional<Hunk> HunkOf(std::string_view line) {
    const auto before = TakeNumbers(line);
    if (!before || line.empty()) return std::nullopt;
    const char kind = line.front();
    std::string_view rest = line.substr(1);
    const auto after = TakeNumbers(rest);
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

/// Whether it is a line of text, a separator, or a remark on a missing line feed.
bool IsText(std::string_view line) {
    return line.starts_with('<') || line.starts_with('>') || line.starts_with('\\') || line == "---";
}

/// Reads the first line and the count, which is 1 if omitted. If the count is 0, the number is that of the
/// line before.
bool TakeUnified(std::string_view& text, std::size_t& first, std::size_t& count) {
    const auto numbers = TakeNumbers(text);
    if (!numbers) return false;
    count = numbers->second.value_or(1);
    first = numbers->first + (count == 0 ? 1 : 0);
    return true;
}

}  // namespace

std::optional<Hunk> UnifiedHunkOf(std::string_view line) {
    Hunk hunk;
    const bool isHead = TakeOff(line, "@@ -") && TakeUnified(line, hunk.oldFirst, hunk.oldCount) &&
                        TakeOff(line, " +") && TakeUnified(line, hunk.newFirst, hunk.newCount);
    return isHead ? std::optional(hunk) : std::nullopt;
}

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
