#include "RepairText.h"

#include <algorithm>
#include <utility>

#include "Lines.h"

namespace ZET {

RepairText::RepairText(std::string_view text) {
    std::size_t number = 0;
    for (const TextLine& line : SplitLines(text))
        m_lines.push_back({std::string(line.text), line.hasLineFeed, ++number});
}

std::vector<std::string_view> RepairText::Texts(std::size_t first, std::size_t end) const {
    std::vector<std::string_view> texts;
    for (std::size_t i = first; i < end; ++i)
        texts.emplace_back(m_lines[i].text);
    return texts;
}

Marker RepairText::MarkerAt(std::size_t index) const {
    const Line& line = m_lines[index];
    return line.takenAs != Marker::None ? line.takenAs : MarkerOf(line.text);
}

bool RepairText::IsOnlyMarker(std::size_t index) const {
    const std::string& text = m_lines[index].text;
    const Marker marker = MarkerOf(text);
    return marker != Marker::None && text == MarkerText(marker);
}

void RepairText::Note(std::size_t index, const std::string& kind, const std::string& text,
                      const std::string& remedy) {
    m_repaired.push_back({m_lines[index].number, kind, text, {remedy}, m_regions});
}

void RepairText::NoteAmbiguous(std::size_t index, const std::string& kind, const std::string& text,
                               const std::vector<std::string>& choices) {
    m_ambiguous.push_back({m_lines[index].number, kind, text, choices, m_regions});
}

void RepairText::InsertBefore(std::size_t index, Marker marker) {
    m_lines[index].before = {std::string(MarkerText(marker))};
}

void RepairText::InsertAfter(std::size_t index, Marker marker) {
    InsertAfter(index, std::string(MarkerText(marker)));
}

void RepairText::Settle() {
    std::vector<Line> settled;
    for (Line& line : m_lines) {
        const auto put = [&, number = line.number](std::string&& text) {
            settled.push_back({std::move(text), true, number});
        };
        const bool hasLineFeed = line.hasLineFeed;
        for (std::string& text : line.before)
            put(std::move(text));
        if (!line.isDropped) {
            settled.push_back({std::move(line.text), true, line.number, line.takenAs});
        }
        for (std::string& text : line.after)
            put(std::move(text));
        // A text that lacked its final line feed still lacks it.
        if (!settled.empty() && !hasLineFeed) settled.back().hasLineFeed = false;
    }
    m_lines = std::move(settled);
}

void RepairText::KeepCarriageReturns() {
    if (m_keepsCarriageReturns) return;
    m_keepsCarriageReturns = true;
    for (Line& line : m_lines)
        if (line.hasLineFeed && line.text.ends_with('\r')) line.text.pop_back();
}

void RepairText::LookAgain() {
    m_ambiguous.clear();
    for (Line& line : m_lines)
        line.takenAs = Marker::None;
}

std::vector<MarkerDamage> RepairText::Damages() const {
    std::vector<MarkerDamage> damages = m_repaired;
    damages.insert(damages.end(), m_ambiguous.begin(), m_ambiguous.end());
    std::stable_sort(damages.begin(), damages.end(), [](const MarkerDamage& one, const MarkerDamage& other) {
        return one.line < other.line;
    });
    return damages;
}

std::string RepairText::Bytes() const {
    const char* const lineEnd = m_keepsCarriageReturns ? "\r\n" : "\n";
    std::string bytes;
    for (const Line& line : m_lines)
        bytes.append(line.text).append(line.hasLineFeed ? lineEnd : "");
    return bytes;
}

}  // namespace ZET
