#include "RepairText.h"

#include <algorithm>
#include <utility>

namespace ZET {

RepairText::RepairText(std::string_view text) {
    std::size_t number = 0;
    for (const TextLine& line : SplitLines(text))
        m_lines.push_back({std::string(line.text), line.hasLineFeed, ++number});
}

bool RepairText::IsEmpty(std::size_t index) const {
    return m_lines[index].text == m_lineEnd || m_lines[index].text.empty();
}

std::vector<std::string_view> RepairText::Texts() const {
    std::vector<std::string_view> texts;
    for (const Line& line : m_lines)
        texts.emplace_back(line.text);
    return texts;
}

Marker RepairText::MarkerAt(std::size_t index) const {
    const Line& line = m_lines[index];
    return line.takenAs != Marker::None ? line.takenAs : MarkerOf(line.text);
}

void RepairText::Note(std::size_t index, const std::string& kind, const std::string& text,
                      const std::string& remedy) {
    m_repaired.push_back({m_lines[index].number, kind, text, {remedy}});
}

void RepairText::NoteAmbiguous(std::size_t index, const std::string& kind, const std::string& text,
                               const std::vector<std::string>& choices) {
    m_ambiguous.push_back({m_lines[index].number, kind, text, choices});
}

void RepairText::InsertBefore(std::size_t index, Marker marker) {
    m_lines[index].before = {std::string(MarkerText(marker)) + m_lineEnd};
}

void RepairText::InsertAfter(std::size_t index, Marker marker) {
    InsertAfter(index, std::string(MarkerText(marker)) + m_lineEnd);
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
    std::string bytes;
    for (const Line& line : m_lines)
        bytes.append(line.text).append(line.hasLineFeed ? "\n" : "");
    return bytes;
}

}  // namespace ZET
