#include "text/PlainValues.h"

#include <algorithm>

#include "posix/ShortText.h"
#include "text/Placeholders.h"

namespace ZET::Text {

namespace {

/// A cheap hash that differs for most names: the size, and the bytes at both ends of the name.
std::size_t HashOf(std::string_view placeholder) {
    const auto byte = [&](std::size_t index) -> std::size_t {
        return static_cast<unsigned char>(placeholder[index]);
    };
    return placeholder.size() + 7 * byte(kPlaceholderBegin.size()) + 13 * byte(placeholder.size() - 2);
}

}  // namespace

PlainValues::PlainValues(const StringMap& values, std::set<std::string>* used) : m_used(used) {
    for (const auto& value : values) {
        // A placeholder must end in its line.
        if (value.first.find('\n') == std::string::npos &&
            value.second.find(kPlaceholderBegin) == std::string::npos)
            m_values.emplace(value.first, Value{&value, value.second.ends_with(kPlaceholderBegin.front())});
    }
}

const std::string* PlainValues::Find(std::string_view text, const PlaceholderRange& range) {
    const std::string_view placeholder(text.data() + range.begin, range.end - range.begin);
    if (placeholder.size() <= kPlaceholderBegin.size()) return nullptr;
    Value*& recent = m_recent[HashOf(placeholder) % m_recent.size()];
    if (recent == nullptr || !IsSame(recent->value->first, placeholder)) {
        Value* const found = Look(placeholder);
        if (found == nullptr) return nullptr;
        recent = found;
    }
    if (recent->canBeginOther && text.substr(range.end).starts_with(kPlaceholderBegin.back())) return nullptr;
    if (!recent->isUsed) Note(*recent);
    return &recent->value->second;
}

PlainValues::Value* PlainValues::Look(std::string_view placeholder) {
    const auto found = m_values.find(placeholder);
    return found == m_values.end() ? nullptr : &found->second;
}

void PlainValues::Note(Value& value) const {
    value.isUsed = true;
    if (m_used != nullptr) m_used->insert(value.value->first);
}

bool PlainValues::Have(char byte) const {
    return std::any_of(m_values.begin(), m_values.end(), [byte](const auto& each) {
        return each.second.value->second.find(byte) != std::string::npos;
    });
}

}  // namespace ZET::Text
