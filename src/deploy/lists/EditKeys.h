#ifndef ZET_EDIT_KEYS_H
#define ZET_EDIT_KEYS_H

#include <map>
#include <optional>
#include <string>
#include <utility>

#include "deploy/host/Words.h"
#include "deploy/lists/KeyReader.h"

namespace ZET::Deploy {

/// Takes the values of one edit's keys.
class EditKeys : KeyReader {
  public:
    EditKeys(ListedEdit& edit, ListProblems& problems) : KeyReader(edit, problems), m_edit(edit) {}

    void Take(const Entry& entry) {
        static const std::map<std::string, void (EditKeys::*)(const Entry&)> kKeys = {
            {"name", &EditKeys::TakeName},         {"file", &EditKeys::TakePath},
            {"param", &EditKeys::TakeParam},       {"value", &EditKeys::TakeValue},
            {"pattern", &EditKeys::TakePattern},   {"line", &EditKeys::TakeLine},
            {"roles", &EditKeys::TakeRoles},       {"when", &EditKeys::TakeWhen},
            {"optional", &EditKeys::TakeOptional}, {"enabled", &EditKeys::TakeEnabled},
        };
        const auto key = kKeys.find(entry.Name());
        if (key != kKeys.end()) return (this->*key->second)(entry);
        AddUnknown(entry,
                   _("file, param and value or pattern and line, roles, when, optional, name or enabled"));
    }

    /// Must be called after the last key; `place` is the entry's.
    void Finish(const Place& place) {
        if (m_first.empty()) return;
        if (!m_edit.param.empty() && !m_edit.text.empty()) TellBothPairs(place, "line", "param");
        if (!m_edit.pattern.empty() && !m_edit.value.empty()) TellBothPairs(place, "value", "pattern");
    }

  private:
    void TakeName(const Entry&) {}  // the entry was found by it
    void TakePath(const Entry& entry) { m_edit.path = PathOf(entry).value_or(""); }
    void TakeOptional(const Entry& entry) { m_edit.isOptional = IsTrue(entry, false); }

    void TakeParam(const Entry& entry) {
        RequireOnePair(entry, true);
        m_edit.param = SelectorOf(entry);
        m_edit.pattern.clear();
        m_edit.text.clear();
    }

    void TakeValue(const Entry& entry) {
        RequireOnePair(entry, true);
        m_edit.value = LineOf(entry);
    }

    void TakePattern(const Entry& entry) {
        RequireOnePair(entry, false);
        m_edit.pattern = SelectorOf(entry);
        m_edit.param.clear();
        m_edit.value.clear();
    }

    void TakeLine(const Entry& entry) {
        RequireOnePair(entry, false);
        m_edit.text = LineOf(entry);
    }

    /// A later list may choose the other pair. Within one entry, nobody would know which of two pairs counts.
    void RequireOnePair(const Entry& entry, bool isOfParam) {
        if (m_first.empty()) {
            m_first = entry.Name();
            m_isOfParam = isOfParam;
        } else if (m_isOfParam != isOfParam) {
            TellBothPairs(entry.KeyPlace(), entry.Name(), m_first);
        }
    }

    void TellBothPairs(const Place& place, const std::string& key, const std::string& other) {
        if (std::exchange(m_isTold, true)) return;
        Problems().Add(place, Words("%s stands beside %s in one edit", key, other),
                       _("keep param and value, or pattern and line"));
    }

    std::string LineOf(const Entry& entry) { return TextOf(entry, _("write it in quotes")).value_or(""); }

    std::string SelectorOf(const Entry& entry) {
        const std::optional<std::string> text = TextOf(entry, _("write it in quotes"));
        if (text && text->empty()) AddEmpty(entry);
        return text.value_or("");
    }

    ListedEdit& m_edit;
    std::string m_first{};  ///< the first key of a pair that was taken
    bool m_isOfParam = false;
    bool m_isTold = false;
};

}  // namespace ZET::Deploy

#endif
