#ifndef ZET_KEY_READER_H
#define ZET_KEY_READER_H

#include <optional>
#include <string>
#include <vector>

#include "deploy/host/Words.h"
#include "deploy/lists/ListProblems.h"
#include "deploy/lists/Targets.h"
#include "deploy/lists/Toml.h"
#include "deploy/state/ParameterNames.h"

namespace ZET::Deploy {

/// Whether the name holds a byte that would end it early, for the system or in the records of a commit.
inline bool HasEnd(const std::string& name) {
    return name.find('\0') != std::string::npos || name.find('\n') != std::string::npos;
}

/// Takes the values of the keys that every kind of entry has. Wrong values become problems.
class KeyReader {
  protected:
    KeyReader(ListEntry& entry, ListProblems& problems) : m_entry(entry), m_problems(problems) {}

    void TakeRoles(const Entry& entry) {
        const char* const remedy = _("write \"server\", \"client\" or \"both\"");
        m_entry.hasRoles = true;
        const std::optional<std::string> roles = TextOf(entry, remedy);
        if (!roles) return;
        m_entry.roles.clear();
        if (const std::optional<Role> role = RoleNamed(*roles)) m_entry.roles = {*role};
        if (*roles == "both") m_entry.roles = {std::begin(kRoles), std::end(kRoles)};
        if (m_entry.roles.empty())
            Problems().Add(entry.ValuePlace(), Words("roles is \"%s\"", *roles), remedy);
    }

    void TakeEnabled(const Entry& entry) { m_entry.isEnabled = IsTrue(entry, true); }

    void TakeWhen(const Entry& entry) {
        const char* const remedy = _("write \"PARAMETER=VALUE\"");
        const std::optional<std::string> text = TextOf(entry, remedy);
        if (!text) return;
        const std::size_t equals = text->find('=');
        const std::string name = text->substr(0, equals);
        if (equals == std::string::npos || !IsParameterName(name))
            return Problems().Add(entry.ValuePlace(), Words("when is \"%s\"", *text), remedy);
        m_entry.when = {name, text->substr(equals + 1)};
        if (m_entry.when.value.find("${") != std::string::npos)
            return Problems().Add(entry.ValuePlace(), Words("when is \"%s\"", *text),
                                  _("write the value itself, as a placeholder is not replaced here"));
        if (!FlagOfParam(name, "")) return;
        // Any other value would count as the default, which nobody means here.
        if (const auto problem = ProblemOfParam(name, m_entry.when.value))
            Problems().Add(entry.ValuePlace(), problem->text, problem->remedy);
    }

    std::optional<std::string> PathOf(const Entry& entry) {
        const std::optional<std::string> path = TextOf(
            entry, _("write a path in quotes; begin it with \"/\", and end it with the name of a file"));
        if (!path || (path->starts_with('/') && !path->ends_with('/'))) return path;
        Problems().Add(entry.ValuePlace(),
                       Words("%s \"%s\" is no absolute path of a file", entry.Name(), *path),
                       _("begin it with \"/\", and end it with the name of a file"));
        return std::nullopt;
    }

    /// Returns `otherwise` if the value is no boolean.
    bool IsTrue(const Entry& entry, bool otherwise) {
        const auto* const value = entry.value->as_boolean();
        if (value == nullptr) AddKind(entry, _("write true or false, without quotes"));
        return value == nullptr ? otherwise : value->get();
    }

    std::optional<std::string> TextOf(const Entry& entry, const std::string& remedy) {
        const auto* const text = entry.value->as_string();
        if (text == nullptr) {
            AddKind(entry, remedy);
            return std::nullopt;
        }
        if (!HasEnd(text->get())) return text->get();
        Problems().Add(entry.ValuePlace(), Words("%s holds a NUL byte or a line feed", entry.Name()),
                       _("take it out"));
        return std::nullopt;
    }

    std::vector<std::string> WordsOf(const Entry& entry, const std::string& remedy) {
        const toml::array* const array = entry.value->as_array();
        if (array == nullptr) {
            AddKind(entry, remedy);
            return {};
        }
        if (array->empty()) AddEmpty(entry);
        std::vector<std::string> words;
        for (const toml::node& node : *array)
            if (std::optional<std::string> word = WordOf(entry, node)) words.push_back(std::move(*word));
        return words;
    }

    std::optional<std::string> WordOf(const Entry& entry, const toml::node& node) {
        const auto* const word = node.as_string();
        if (word == nullptr) {
            Problems().Add(PlaceOf(node.source()), Words("%s holds %s", entry.Name(), KindOf(node)),
                           _("write each word in quotes"));
        } else if (word->get().find('\0') != std::string::npos) {
            Problems().Add(PlaceOf(node.source()), Words("%s holds a NUL byte", entry.Name()),
                           _("take it out"));
        } else {
            return word->get();
        }
        return std::nullopt;
    }

    void AddKind(const Entry& entry, const std::string& remedy) {
        Problems().Add(entry.ValuePlace(), Words("%s is %s", entry.Name(), KindOf(*entry.value)), remedy);
    }

    void AddEmpty(const Entry& entry) {
        Problems().Add(entry.ValuePlace(), Words("%s is empty", entry.Name()),
                       _("fill it, or remove the line"));
    }

    void AddUnknown(const Entry& entry, const std::string& known) {
        Problems().Add(entry.KeyPlace(), Words("unknown key \"%s\"", entry.Name()), Words("use %s", known));
    }

    ListProblems& Problems() { return m_problems; }

  private:
    ListEntry& m_entry;
    ListProblems& m_problems;
};

}  // namespace ZET::Deploy

#endif
