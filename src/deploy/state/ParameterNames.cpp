#include "deploy/state/ParameterNames.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

#include "zet/ZETHost.h"

namespace ZET::Deploy {

namespace {

constexpr std::size_t kMostMistypedLetters = 2;

/// How many letters have to be inserted, removed, replaced or swapped with the next one to make one name of
/// the other.
std::size_t DistanceOf(std::string_view one, std::string_view other) {
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    std::vector<std::size_t> last(row), beforeLast(row);
    for (std::size_t i = 0; i < one.size(); ++i) {
        beforeLast.swap(last);
        last.swap(row);
        row[0] = i + 1;
        for (std::size_t j = 0; j < other.size(); ++j) {
            row[j + 1] = std::min({last[j] + (one[i] == other[j] ? 0 : 1), last[j + 1] + 1, row[j] + 1});
            if (i > 0 && j > 0 && one[i] == other[j - 1] && one[i - 1] == other[j])
                row[j + 1] = std::min(row[j + 1], beforeLast[j - 1] + 1);
        }
    }
    return row.back();
}

/// Two in a short name make another one of it.
std::size_t MostMistypedLetters(std::string_view name) {
    constexpr std::size_t kLettersOfOne = 3;
    return std::clamp(name.size() / kLettersOfOne, std::size_t{1}, kMostMistypedLetters);
}

}  // namespace

bool IsParameterName(std::string_view name) {
    constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_";
    return !name.empty() && kLetters.find(name.front()) != std::string_view::npos &&
           name.find_first_not_of(std::string(kLetters) + "0123456789") == std::string_view::npos;
}

std::vector<std::string> NamesOfTheProduct() {
    std::vector<std::string> names;
    for (const ZETParameter& parameter : KnownParameters())
        names.push_back(parameter.name);
    return names;
}

std::optional<bool> MeaningOf(const std::string& name, const std::string& value) {
    // The words that mean yes or no for this parameter mean the same for those of the host's own.
    constexpr char kAnyFlag[] = "SERVICE_DISCOVERY";
    if (IsKnownParameter(name)) return FlagOfParam(name, value);
    return ProblemOfParam(kAnyFlag, value) ? std::nullopt : FlagOfParam(kAnyFlag, value);
}

bool HaveSameMeaning(const std::string& name, const std::string& one, const std::string& other) {
    const std::optional<bool> meaning = MeaningOf(name, one);
    return meaning ? meaning == MeaningOf(name, other) : one == other;
}

std::string PlaceholderFor(const std::string& name) {
    std::string placeholder = "${";
    for (const char c : name)
        placeholder += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return placeholder + "}";
}

std::string NameOfPlaceholder(const std::string& placeholder) {
    return placeholder.substr(2, placeholder.size() - 3);
}

std::string ParameterBehind(const std::string& placeholder) {
    for (const OwnPlaceholder& source : kOwnPlaceholders)
        if (placeholder == source.placeholder) return source.parameter;
    return "";
}

std::string ParameterThatMakes(const std::string& name) {
    const std::optional<ZETParameter> known = KnownParameter(name);
    return known ? known->source : "";
}

std::string NearestName(const std::string& name, const std::vector<std::string>& names) {
    std::string nearest;
    std::size_t least = MostMistypedLetters(name) + 1;
    for (const std::string& candidate : names) {
        const std::size_t lengths =
            std::max(name.size(), candidate.size()) - std::min(name.size(), candidate.size());
        if (lengths >= least) continue;
        const std::size_t distance = DistanceOf(name, candidate);
        if (distance >= least) continue;
        least = distance;
        nearest = candidate;
    }
    return nearest;
}

std::string LikelyName(const std::string& name, const std::vector<std::string>& names) {
    constexpr std::size_t kShortest = 5;
    return name.size() < kShortest ? "" : NearestName(name, names);
}

}  // namespace ZET::Deploy
