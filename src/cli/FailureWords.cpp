#include "cli/FailureWords.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "cli/Translation.h"

namespace ZET::Cli {

namespace {

constexpr std::string_view kGap = "%s";
constexpr int kDeepest = 3;  ///< what stands in a gap may have gaps of its own

/// All that the library can say; "script/texts --update" finds it in its sources.
constexpr const char* kTexts[] = {
#include "cli/FailureTexts.inc"  // IWYU pragma: keep
};

std::size_t GapsOf(std::string_view pattern) {
    std::size_t count = 0;
    for (std::size_t place = 0; (place = pattern.find(kGap, place)) != std::string_view::npos; ++place)
        ++count;
    return count;
}

/// Takes what stands in the next gap from the text, up to the pattern's words behind it, and both from the
/// front.
bool TakeGap(std::string_view& text, std::string_view& pattern, std::vector<std::string>& values) {
    pattern.remove_prefix(kGap.size());
    const std::string_view words = pattern.substr(0, pattern.find(kGap));
    const bool isLast = words.size() == pattern.size();
    if (isLast && !text.ends_with(words)) return false;
    const std::size_t end = isLast ? text.size() - words.size() : text.find(words);
    if (end == std::string_view::npos) return false;
    values.emplace_back(text.substr(0, end));
    text.remove_prefix(end + words.size());
    pattern.remove_prefix(words.size());
    return true;
}

/// What stands in the gaps of the pattern, if the text was made by it.
std::optional<std::vector<std::string>> ValuesIn(std::string_view text, std::string_view pattern) {
    const std::size_t first = pattern.find(kGap);
    if (first == std::string_view::npos || !text.starts_with(pattern.substr(0, first))) return std::nullopt;
    std::vector<std::string> values;
    text.remove_prefix(first);
    pattern.remove_prefix(first);
    while (!pattern.empty()) {
        if (!TakeGap(text, pattern, values)) return std::nullopt;
    }
    return text.empty() ? std::optional(values) : std::nullopt;
}

struct Match {
    const char* pattern = nullptr;
    std::size_t words =
        0;  ///< bytes of the pattern that are no gap: the more, the less is a matter of chance
    std::vector<std::string> values{};
};

Match MatchOf(std::string_view text) {
    Match best;
    for (const char* pattern : kTexts) {
        const std::size_t words = std::string_view(pattern).size() - kGap.size() * GapsOf(pattern);
        if (words <= best.words) continue;
        if (auto values = ValuesIn(text, pattern)) best = {pattern, words, std::move(*values)};
    }
    return best;
}

std::string SaidToDepth(const std::string& text, int depth);

/// A text of the library, whole.
std::optional<std::string> KnownText(const std::string& text, int depth) {
    const auto isText = [&](const char* known) { return text == known; };
    const auto* const known = std::find_if(std::begin(kTexts), std::end(kTexts), isText);
    if (known != std::end(kTexts)) return _(*known);
    Match match = MatchOf(text);
    if (match.pattern == nullptr) return std::nullopt;
    for (std::string& value : match.values)
        value = SaidToDepth(value, depth + 1);
    return Filled(_(match.pattern), match.values);
}

/// Several of its texts are put together as "text: text (text)".
std::string SaidToDepth(const std::string& text, int depth) {
    if (text.empty() || depth > kDeepest) return text;
    if (const auto known = KnownText(text, depth)) return *known;
    if (const std::size_t remedy = text.rfind(" ("); remedy != std::string::npos && text.back() == ')')
        return SaidToDepth(text.substr(0, remedy), depth) + " (" +
               SaidToDepth(text.substr(remedy + 2, text.size() - remedy - 3), depth) + ")";
    const std::size_t colon = text.find(": ");
    if (colon == std::string::npos) return text;
    return SaidToDepth(text.substr(0, colon), depth) + ": " + SaidToDepth(text.substr(colon + 2), depth);
}

}  // namespace

std::string Said(const std::string& sentence) {
    return IsTranslated() ? SaidToDepth(sentence, 0) : sentence;
}

std::string Said(const Problem& problem) {
    if (!IsTranslated()) return problem.Describe();
    Problem said = problem;
    said.text = Said(problem.text);
    said.remedy = Said(problem.remedy);
    return said.Describe();
}

std::string Said(const Deploy::Failure& failure) {
    const std::string words = failure.what();
    const std::string sentence = failure.Facts().Describe();
    if (!words.ends_with(sentence)) return Said(words);
    return Said(words.substr(0, words.size() - sentence.size())) + Said(failure.Facts());
}

}  // namespace ZET::Cli
