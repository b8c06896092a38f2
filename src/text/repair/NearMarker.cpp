#include "text/repair/NearMarker.h"

#include <algorithm>
#include <array>

namespace ZET::Text {

namespace {

/// Includes the dashes that a text processor makes of two in a row: en dash and em dash.
constexpr std::array<std::string_view, 3> kDashes = {"-", "\u2013", "\u2014"};

/// Blanks and comment signs, which an editor may add when it indents a line or comments it out.
constexpr std::array<std::string_view, 6> kSurroundings = {" ", "\t", "\r", "#", ";", "/"};

template <std::size_t Count>
bool TakeFront(std::string_view& text, const std::array<std::string_view, Count>& pieces) {
    const auto* piece = std::find_if(pieces.begin(), pieces.end(),
                                     [&](std::string_view start) { return text.starts_with(start); });
    if (piece == pieces.end()) return false;
    text.remove_prefix(piece->size());
    return true;
}

template <std::size_t Count>
bool TakeBack(std::string_view& text, const std::array<std::string_view, Count>& pieces) {
    const auto* piece =
        std::find_if(pieces.begin(), pieces.end(), [&](std::string_view end) { return text.ends_with(end); });
    if (piece == pieces.end()) return false;
    text.remove_suffix(piece->size());
    return true;
}

std::size_t TakeDashesInFront(std::string_view& text) {
    std::size_t dashes = 0;
    while (TakeFront(text, kDashes))
        ++dashes;
    return dashes;
}

/// Returns the number of dashes among them.
std::size_t TakeSurroundingsInFront(std::string_view& text) {
    std::size_t dashes = 0;
    for (;;) {
        dashes += TakeDashesInFront(text);
        if (!TakeFront(text, kSurroundings)) return dashes;
    }
}

std::size_t TakeSurroundingsBehind(std::string_view& text) {
    std::size_t dashes = 0;
    for (;;) {
        if (TakeBack(text, kDashes)) {
            ++dashes;
        } else if (!TakeBack(text, kSurroundings)) {
            return dashes;
        }
    }
}

char UpperCase(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool TakeWord(std::string_view& text, std::string_view word) {
    const bool isThere =
        text.size() >= word.size() && std::equal(word.begin(), word.end(), text.begin(),
                                                 [](char wanted, char c) { return wanted == UpperCase(c); });
    if (isThere) text.remove_prefix(word.size());
    return isThere;
}

std::string UpperCase(std::string_view text) {
    std::string letters(text);
    std::transform(letters.begin(), letters.end(), letters.begin(), [](char c) { return UpperCase(c); });
    return letters;
}

/// Whether they are equal, or differ in one letter that is wrong, missing or extra.
bool IsNearly(std::string_view one, std::string_view other) {
    if (one.size() > other.size()) std::swap(one, other);
    if (other.size() - one.size() > 1) return false;
    const auto same =
        static_cast<std::size_t>(std::mismatch(one.begin(), one.end(), other.begin()).first - one.begin());
    if (same == one.size()) return true;
    const std::size_t skip = one.size() == other.size() ? 1 : 0;
    return one.substr(same + skip) == other.substr(same + 1);
}

/// "ZET_BEGIN" of "# ---ZET_BEGIN---"
std::string_view NameOf(Marker marker) {
    std::string_view name = MarkerText(marker);
    TakeSurroundingsInFront(name);
    TakeSurroundingsBehind(name);
    return name;
}

std::optional<NearMarker> FindNearFormerLine(std::string_view line) {
    if (TakeSurroundingsInFront(line) == 0 || !TakeWord(line, "PRE")) return std::nullopt;
    if (TakeDashesInFront(line) == 0 || !TakeWord(line, "ZET") || TakeDashesInFront(line) == 0)
        return std::nullopt;
    // The marker ends with one blank; more of them belong to the former text.
    if (line.starts_with(' ') || line.starts_with('\t')) line.remove_prefix(1);
    return NearMarker{Marker::FormerLine, std::string(MarkerText(Marker::FormerLine)).append(line)};
}

std::string_view WithoutBlanksInFront(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(" \t\r"), text.size()));
}

}  // namespace

std::optional<NearMarker> FindNearMarker(std::string_view line) {
    if (MarkerOf(line) != Marker::None) return std::nullopt;
    if (auto former = FindNearFormerLine(line)) return former;
    std::string_view name = line;
    if (TakeSurroundingsInFront(name) + TakeSurroundingsBehind(name) == 0) return std::nullopt;
    const std::string letters = UpperCase(name);
    for (const Marker marker : kMarkers) {
        if (marker == Marker::FormerLine || !IsNearly(letters, NameOf(marker))) continue;
        return NearMarker{marker, std::string(MarkerText(marker))};
    }
    return std::nullopt;
}

bool IsOnlySurroundings(std::string_view text) {
    TakeSurroundingsInFront(text);
    return text.empty();
}

std::optional<GluedMarker> FindGluedMarker(std::string_view line) {
    const bool isFormerLine = MarkerOf(line) == Marker::FormerLine;
    for (std::size_t position = line.find(kMarkerStart, 1); position != std::string_view::npos;
         position = line.find(kMarkerStart, position + 1)) {
        const Marker marker = MarkerOf(line.substr(position));
        // A former line that was replaced twice has a second prefix after its prefix.
        if (marker == Marker::None || (marker == Marker::FormerLine && isFormerLine)) continue;
        const std::string_view rest = WithoutBlanksInFront(line.substr(position + MarkerText(marker).size()));
        if (marker == Marker::FormerLine || rest.empty() || MarkerOf(rest) != Marker::None)
            return GluedMarker{marker, position};
    }
    return std::nullopt;
}

}  // namespace ZET::Text
