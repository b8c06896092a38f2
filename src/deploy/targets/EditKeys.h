#ifndef ZET_EDIT_KEYS_H
#define ZET_EDIT_KEYS_H

#include <map>
#include <optional>
#include <string>

#include "deploy/host/Words.h"
#include "deploy/targets/KeyReader.h"

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

  private:
    void TakeName(const Entry&) {}  // by which the entry was found
    void TakePath(const Entry& entry) { m_edit.path = PathOf(entry).value_or(""); }
    void TakeValue(const Entry& entry) { m_edit.value = LineOf(entry); }
    void TakeLine(const Entry& entry) { m_edit.text = LineOf(entry); }
    void TakeOptional(const Entry& entry) { m_edit.isOptional = IsTrue(entry, false); }

    /// One of the two selects the line: the last one said.
    void TakeParam(const Entry& entry) {
        m_edit.param = SelectorOf(entry);
        m_edit.pattern.clear();
    }

    void TakePattern(const Entry& entry) {
        m_edit.pattern = SelectorOf(entry);
        m_edit.param.clear();
    }

    std::string LineOf(const Entry& entry) { return TextOf(entry, _("write it in quotes")).value_or(""); }

    std::string SelectorOf(const Entry& entry) {
        const std::optional<std::string> text = TextOf(entry, _("write it in quotes"));
        if (text && text->empty()) AddEmpty(entry);
        return text.value_or("");
    }

    ListedEdit& m_edit;
};

}  // namespace ZET::Deploy

#endif
