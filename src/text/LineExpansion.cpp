#include "text/LineExpansion.h"

#include <algorithm>

namespace ZET::Text {

namespace {

/// The limit for one line, in addition to its size.
constexpr std::size_t kMostReplacements = 100'000;
constexpr std::size_t kLongestName = 100;

}  // namespace

LineExpansion::LineExpansion(std::string_view line, const StringMap& values, std::size_t longestKey,
                             std::set<std::string>* used)
    : m_values(values),
      m_longestKey(longestKey),
      m_used(used),
      m_left(line.rbegin(), line.rend()),
      m_lineSize(line.size()),
      m_lineLeft(line.size()) {}

LineExpansion::Verdict LineExpansion::Next() {
    while (GoToPlaceholder()) {
        const std::size_t end = FindEnd();
        if (end == std::string::npos) return Verdict::NoEnd;
        // If it is too long to have a value, its beginning is enough to identify it.
        const std::size_t length = std::min(m_left.size() - end, std::max(m_longestKey, kLongestName) + 1);
        m_placeholder.assign(m_left.rbegin(), m_left.rbegin() + static_cast<std::ptrdiff_t>(length));
        if (m_used != nullptr) m_used->insert(m_placeholder);
        const auto value = m_values.find(m_placeholder);
        if (value == m_values.end()) {
            // The module marks it in the same way.
            m_left.back() = '!';
            Skip(1);
            return Verdict::NoValue;
        }
        if (!Replace(end, value->second)) return Verdict::Endless;
    }
    return Verdict::Fine;
}

std::size_t LineExpansion::FindEnd() {
    if (m_end >= m_left.size()) m_end = m_left.rfind('}');
    return m_end;
}

void LineExpansion::Skip(std::size_t count) {
    if (m_expanded.size() < m_most) {
        const std::size_t kept = std::min(count, m_most - m_expanded.size());
        m_expanded.append(m_left.rbegin(), m_left.rbegin() + static_cast<std::ptrdiff_t>(kept));
    }
    m_left.resize(m_left.size() - count);
    m_written += count;
    m_lineLeft = std::min(m_lineLeft, m_left.size());
}

bool LineExpansion::GoToPlaceholder() {
    for (;;) {
        const std::size_t dollar = m_left.rfind('$');
        if (dollar == std::string::npos || dollar == 0) {
            Skip(m_left.size());
            return false;
        }
        Skip(m_left.size() - 1 - dollar);
        if (m_left[dollar - 1] == '{') break;
        Skip(1);
    }
    if (m_left.size() == m_lineLeft) m_column = m_lineSize - m_left.size() + 1;
    return true;
}

bool LineExpansion::Replace(std::size_t end, const std::string& value) {
    m_left.resize(end);
    m_lineLeft = std::min(m_lineLeft, m_left.size());
    m_left.append(value.rbegin(), value.rend());
    m_end = std::string::npos;
    return ++m_replacements <= kMostReplacements + m_lineSize &&
           m_written + m_left.size() <= kLongestLine + m_lineSize;
}

}  // namespace ZET::Text
