#include "deploy/lists/ListProblems.h"

#include <algorithm>
#include <utility>

namespace ZET::Deploy {

void ListProblems::Add(const Place& place, const std::string& text, const std::string& remedy) {
    m_problems.push_back({m_file, place.line, ColumnOf(place), text, remedy});
}

std::vector<Problem> ListProblems::Take() {
    std::stable_sort(m_problems.begin(), m_problems.end(), [](const Problem& one, const Problem& other) {
        return std::pair(one.line, one.column) < std::pair(other.line, other.column);
    });
    return std::move(m_problems);
}

std::string_view ListProblems::LineAt(int number) {
    if (m_lineBegins.empty()) FindLines();
    const auto line = static_cast<std::size_t>(number);
    if (line == 0 || line > m_lineBegins.size()) return {};
    const std::string_view rest = m_text.substr(m_lineBegins[line - 1]);
    return rest.substr(0, rest.find('\n'));
}

/// The column, in bytes from 1, of the character at this place; 0 if there is no such line.
int ListProblems::ColumnOf(const Place& place) {
    if (m_lineBegins.empty()) FindLines();
    const auto line = static_cast<std::size_t>(place.line);
    if (line == 0 || line > m_lineBegins.size()) return 0;
    const auto isInCharacter = [&](std::size_t byte) {
        return byte < m_text.size() && (static_cast<unsigned char>(m_text[byte]) & 0xC0) == 0x80;
    };
    std::size_t byte = m_lineBegins[line - 1];
    for (int character = 1; character < place.character && byte < m_text.size(); ++character) {
        do {
            ++byte;
        } while (isInCharacter(byte));
    }
    return static_cast<int>(byte - m_lineBegins[line - 1] + 1);
}

void ListProblems::FindLines() {
    m_lineBegins.push_back(0);
    for (std::size_t end = 0; (end = m_text.find('\n', end)) != std::string_view::npos;)
        m_lineBegins.push_back(++end);
}

}  // namespace ZET::Deploy
