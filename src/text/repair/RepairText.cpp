#include "text/repair/RepairText.h"

#include <algorithm>

#include "text/Lines.h"

namespace ZET::Text {

RepairText::RepairText(std::string_view text) {
    m_lines.reserve(static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1);
    std::uint32_t number = 0;
    while (!text.empty()) {
        const TextLine line = TakeLine(text);
        m_lines.push_back({line.text, ++number, line.hasLineFeed});
    }
}

std::vector<std::string_view> RepairText::Texts(std::size_t first, std::size_t end) const {
    std::vector<std::string_view> texts;
    for (std::size_t i = first; i < std::min(end, Size()); ++i)
        texts.emplace_back(m_lines[i].text);
    return texts;
}

Marker RepairText::MarkerAt(std::size_t index) const {
    const Line& line = m_lines[index];
    return line.takenAs != Marker::None ? line.takenAs : MarkerOf(line.text);
}

bool RepairText::IsOnlyMarker(std::size_t index) const {
    const std::string_view text = m_lines[index].text;
    const Marker marker = MarkerOf(text);
    return marker != Marker::None && text == MarkerText(marker);
}

void RepairText::Note(std::size_t index, const char* kind, const std::string& text,
                      const std::string& remedy) {
    m_repaired.push_back({m_lines[index].number, kind, text, {remedy}, m_regions});
}

void RepairText::NoteAmbiguous(std::size_t index, const char* kind, const std::string& text,
                               const std::vector<std::string>& choices) {
    m_ambiguous.push_back({m_lines[index].number, kind, text, choices, m_regions});
}

void RepairText::Replace(std::size_t index, std::string_view text) {
    m_lines[index].text = text;
    m_isChanged = true;
}

void RepairText::Drop(std::size_t index) {
    m_lines[index].isDropped = m_hasDropped = true;
}

void RepairText::InsertBefore(std::size_t index, Marker marker) {
    m_insertions.push_back({index, {MarkerText(marker), m_lines[index].number}});
}

void RepairText::InsertAfter(std::size_t index, std::string_view text) {
    m_insertions.push_back({index + 1, {text, m_lines[index].number}});
}

void RepairText::Settle() {
    if (m_insertions.empty() && !m_hasDropped) return;
    std::stable_sort(m_insertions.begin(), m_insertions.end(),
                     [](const Insertion& one, const Insertion& other) { return one.before < other.before; });
    // A text without a final line feed remains so.
    const bool hasLineFeed = m_lines.back().hasLineFeed;
    m_lines.back().hasLineFeed = true;
    std::vector<Line> settled;
    settled.reserve(m_lines.size() + m_insertions.size());
    auto insertion = m_insertions.begin();
    for (std::size_t i = 0; i <= m_lines.size(); ++i) {
        for (; insertion != m_insertions.end() && insertion->before == i; ++insertion)
            settled.push_back(insertion->line);
        if (i < m_lines.size() && !m_lines[i].isDropped) settled.push_back(m_lines[i]);
    }
    if (!settled.empty()) settled.back().hasLineFeed = hasLineFeed;
    m_lines = std::move(settled);
    m_insertions.clear();
    m_hasDropped = false;
    m_isChanged = true;
}

void RepairText::KeepCarriageReturns() {
    if (m_keepsCarriageReturns) return;
    m_keepsCarriageReturns = true;
    for (Line& line : m_lines)
        if (line.hasLineFeed) line.text = WithoutCarriageReturn(line.text);
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
    const std::string_view lineEnd = m_keepsCarriageReturns ? "\r\n" : "\n";
    std::size_t size = 0;
    for (const Line& line : m_lines)
        size += line.text.size() + lineEnd.size();
    std::string bytes;
    bytes.reserve(size);
    for (const Line& line : m_lines)
        bytes.append(line.text).append(line.hasLineFeed ? lineEnd : "");
    return bytes;
}

}  // namespace ZET::Text
